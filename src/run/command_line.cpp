#include "run/command_line.h"

#include <algorithm>

#include "base/ci_string.h"
#include "platform/environment.h"

namespace Vesk {

namespace {

// Both ends are blanks: a program stands before it, a command after it.
constexpr std::string_view kPowershellOptions =
    " -NoProfile -NonInteractive -ExecutionPolicy Bypass -Command ";

}  // namespace

std::string quoteArgument(std::string_view text) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : text) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        quoted.append(c == '"' ? 2 * backslashes + 1 : backslashes, '\\');
        quoted += c;
        backslashes = 0;
    }
    quoted.append(2 * backslashes, '\\');
    quoted += '"';
    return quoted;
}

std::string commandInterpreter() {
    std::string interpreter = platform::environmentVariable("COMSPEC").value_or("");
    return interpreter.empty() ? "cmd.exe" : interpreter;
}

std::string interpreterCommandLine(std::string_view text) {
    std::string line = "\"";
    line.append(commandInterpreter()).append("\" /D /C \"").append(text).append("\"");
    return line;
}

std::string powershellCommandLine(std::string_view text) {
    return quoteArgument("powershell.exe").append(kPowershellOptions).append(quoteArgument(text));
}

std::vector<std::string> interpreterArguments(std::string_view text) {
    return {"/bin/sh", "-c", std::string(text)};
}

std::vector<std::string> powershellArguments(std::string_view text) {
    return {"pwsh",   "-NoProfile", "-NonInteractive", "-ExecutionPolicy",
            "Bypass", "-Command",   std::string(text)};
}

std::vector<std::string> environmentWith(std::vector<std::string> entries,
                                         const std::vector<std::string>& variables) {
    for (const std::string& variable : variables) {
        const std::string_view name = std::string_view(variable).substr(0, variable.find('=') + 1);
        std::erase_if(entries, [name](std::string_view entry) {
            return equalsIgnoringCase(entry.substr(0, name.size()), name);
        });
        entries.push_back(variable);
    }
    return entries;
}

std::vector<std::string> environmentWithPath(std::vector<std::string> entries,
                                             const std::vector<std::string>& searchDirectories,
                                             std::string_view path, char separator) {
    constexpr std::string_view kPath = "PATH=";
    std::erase_if(entries, [&](std::string_view entry) {
        return equalsIgnoringCase(entry.substr(0, kPath.size()), kPath);
    });
    std::string& entry = entries.emplace_back(kPath);
    for (const std::string& directory : searchDirectories) {
        if (entry.size() > kPath.size()) {
            entry += separator;
        }
        entry += directory;
    }
    if (!path.empty()) {
        entry.append(entry.size() > kPath.size() ? 1 : 0, separator).append(path);
    }
    std::ranges::stable_sort(
        entries, [](const auto& a, const auto& b) { return compareIgnoringCase(a, b) < 0; });
    return entries;
}

}  // namespace Vesk
