#include "run/capture_output.h"

#include <utility>

#include "base/console.h"
#include "base/text.h"
#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {

namespace {

/// The program in double quotes. A POSIX shell still gives a few characters a meaning there.
std::string quotedProgram(const std::filesystem::path& program) {
    std::string quoted = "\"";
    for (const char c : platform::pathToUtf8(program)) {
        if (!platform::kWindows && std::string_view("\"$`\\").find(c) != std::string_view::npos) {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted += '"';
}

std::string discardingErrors(std::string command) {
    return std::move(command.append(" 2>").append(platform::kNullDevice));
}

}  // namespace

ProgramAnswer askProgram(const std::filesystem::path& program, std::string_view arguments,
                         platform::Dependence dependence) {
    ProgramAnswer answer;
    const std::string command = quotedProgram(program).append(" ").append(arguments);
    answer.text =
        platform::captureShellOutput(discardingErrors(command), &answer.status, dependence)
            .value_or("");
    return answer;
}

std::string captureOutput(const std::filesystem::path& program, std::string_view arguments,
                          bool discardErrors) {
    std::string command = quotedProgram(program).append(" ").append(arguments);
    if (discardErrors) {
        command = discardingErrors(std::move(command));
    } else {
        console::flush();
    }
    return std::string(trimmed(platform::captureShellOutput(command).value_or("")));
}

}  // namespace Vesk
