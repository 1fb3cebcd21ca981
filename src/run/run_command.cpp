#include "run/run_command.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/ci_string.h"
#include "base/collector.h"
#include "base/console.h"
#include "events/events.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/process.h"
#include "platform/system.h"
#include "run/command_line.h"

namespace Vesk {

namespace {

bool usesPowershell(const Command& command) {
    return command.shell == shell::kPowershell;
}

/// A variable as the command's children see it; empty without one.
std::string variableFor(const Command& command, const std::string& name) {
    const std::string start = name + "=";
    for (const std::string& variable : command.environment) {
        if (platform::kWindows ? equalsIgnoringCase(variable.substr(0, start.size()), start)
                               : variable.starts_with(start)) {
            return variable.substr(start.size());
        }
    }
    return platform::environmentVariable(name).value_or("");
}

/// Nothing for children that inherit ours.
std::optional<std::vector<std::string>> environmentFor(const Command& command) {
    const bool ownPath = !command.searchDirectories.empty() || command.toolEnvironment;
    if (!ownPath && command.environment.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> entries =
        environmentOf(platform::environmentEntries(), command.environment);
    if (!ownPath) {
        return entries;
    }
    if (command.toolEnvironment) {
        entries = environmentWith(std::move(entries), command.toolEnvironment->variables);
    }
    std::vector<std::string> directories;
    directories.reserve(command.searchDirectories.size());
    for (const std::filesystem::path& directory : command.searchDirectories) {
        directories.push_back(platform::pathToUtf8(directory));
    }
    return environmentWithPath(std::move(entries), directories, variableFor(command, "PATH"),
                               platform::kPathListSeparator);
}

/// Hands on what a command writes, and tells of it in whole lines.
class OutputTeller {
  public:
    explicit OutputTeller(events::Id command) : command_(command) {}
    ~OutputTeller() {
        tell(platform::Stream::Output, std::string::npos);
        tell(platform::Stream::Error, std::string::npos);
    }
    OutputTeller(const OutputTeller&) = delete;
    OutputTeller& operator=(const OutputTeller&) = delete;

    void take(platform::Stream stream, std::string_view bytes) {
        console::writeOutput(stream, bytes);
        if (command_ != 0) {
            std::string& begun = begunFor(stream);
            begun += bytes;
            tell(stream, begun.rfind('\n') + 1);
        }
    }

  private:
    std::string& begunFor(platform::Stream stream) noexcept {
        return stream == platform::Stream::Output ? output_ : error_;
    }

    void tell(platform::Stream stream, std::size_t size) {
        std::string& begun = begunFor(stream);
        if (size != 0 && !begun.empty()) {
            events::emit(events::Output{command_, stream, begun.substr(0, size)});
            begun.erase(0, size);
        }
    }

    events::Id command_;
    std::string output_;  ///< lines that have no end yet
    std::string error_;
};

platform::ProcessRequest requestFor(const Command& command) {
    platform::ProcessRequest request;
    if constexpr (platform::kWindows) {
        request.commandLine = usesPowershell(command) ? powershellCommandLine(command.command)
                                                      : interpreterCommandLine(command.command);
    } else if (usesPowershell(command)) {
        request.arguments = powershellArguments(command.command);
    } else {
        request.arguments = interpreterArguments(command.command);
        request.directArguments = directArguments(command.command);
    }
    request.workingDirectory = command.workingDirectory;
    request.environment = environmentFor(command);
    request.deadline = command.deadline;
    request.readsInput = !console::collects();
    return request;
}

// The longest text that cmd.exe takes, in characters. It refuses longer ones, but there are
// versions of it that then report success.
constexpr std::size_t kMaxInterpreterText = 8191;

// The code with which Windows itself refuses a line that is too long (ERROR_FILENAME_EXCED_RANGE).
constexpr std::int32_t kTooLong = 206;

std::size_t characterCount(std::string_view text) noexcept {
    // Every byte counts that does not continue a character.
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool exceedsInterpreter(const Command& command) {
    if (!platform::kWindows || usesPowershell(command) ||
        command.command.size() <= kMaxInterpreterText) {
        return false;
    }
    const std::string name =
        platform::pathToUtf8(platform::pathFromUtf8(commandInterpreter()).filename());
    return equalsIgnoringCase(name, "cmd.exe") &&
           characterCount(command.command) > kMaxInterpreterText;
}

std::string startedProgram(const Command& command) {
    if (usesPowershell(command)) {
        return platform::kWindows ? "powershell.exe" : powershellArguments("").front();
    }
    return platform::kWindows ? commandInterpreter() : interpreterArguments("").front();
}

/// What is wrong with the working directory, if anything.
std::string directoryFault(const std::filesystem::path& directory) {
    if (directory.empty()) {
        return {};
    }
    const std::string name = platform::pathToUtf8(directory);
    std::error_code error;
    if (!platform::exists(directory, error)) {
        return error ? std::string() : fmt::format("Working directory '{}' does not exist.", name);
    }
    if (!platform::isDirectory(directory)) {
        return fmt::format("Working directory '{}' is not a directory.", name);
    }
    return {};
}

std::string explainStart(const Command& command, int code) {
    if (platform::interruptSignal() != 0) {
        return "The command was not started: vesk was interrupted.";
    }
    if (std::string fault = directoryFault(command.workingDirectory); !fault.empty()) {
        return fault;
    }
    const std::string where =
        command.workingDirectory.empty()
            ? ""
            : fmt::format(" in '{}'", platform::pathToUtf8(command.workingDirectory));
    return fmt::format("{} '{}' could not be started{}: {} (code {}).{}",
                       usesPowershell(command) ? "PowerShell" : "Command interpreter",
                       startedProgram(command), where, platform::systemErrorText(code), code,
                       usesPowershell(command) ? " Is it installed and in PATH?" : "");
}

/// Why a value that the command text refers to cannot be had, if so. The interpreter of Windows
/// puts it between quotes before anything reads them.
std::string secretFault(const Command& command) {
    for (const std::string& name : command.secretVariables) {
        const std::string value = variableFor(command, name);
        if (value.empty()) {
            return fmt::format("The command needs the environment variable '{}', which is not set.",
                               name);
        }
        if (platform::kWindows && (value.find('"') != std::string::npos || value.back() == '\\')) {
            return fmt::format(
                "The environment variable '{}' holds a double quote or ends with a backslash, "
                "which the command interpreter does not hand on unchanged.",
                name);
        }
    }
    return {};
}

platform::ProcessResult runSeen(const Command& command, CommandView* view) {
    platform::ProcessRequest request = requestFor(command);
    if (!events::listened()) {
        if (console::collects()) {
            request.output = console::writeOutput;
        }
        return platform::runProcess(request);
    }
    OutputTeller teller(view != nullptr ? view->id : 0);
    request.output = [&teller](platform::Stream stream, std::string_view bytes) {
        teller.take(stream, bytes);
    };
    request.measures = view != nullptr;
    const platform::ProcessResult result = platform::runProcess(request);
    if (view != nullptr) {
        view->usage = result.usage;
    }
    return result;
}

// With which the system calls a value bad (ERROR_BAD_ENVIRONMENT, EINVAL).
constexpr std::int32_t kBadEnvironment = platform::kWindows ? 10 : 22;

}  // namespace

std::int32_t runCommand(const Command& command, std::string* startFailure, CommandView* view) {
    console::normal("{}", command.command);
    if (exceedsInterpreter(command)) {
        if (startFailure != nullptr) {
            *startFailure = fmt::format(
                "The command has {} characters, the command interpreter takes at most {}. Pass the "
                "arguments in a response file.",
                characterCount(command.command), kMaxInterpreterText);
        }
        return kTooLong;
    }
    if (std::string fault = secretFault(command); !fault.empty()) {
        if (startFailure != nullptr) {
            *startFailure = std::move(fault);
        }
        return kBadEnvironment;
    }
    if (!console::collects()) {
        console::flush();
    }
    const platform::ProcessResult result = runSeen(command, view);
    if (startFailure != nullptr) {
        *startFailure = result.started ? std::string() : explainStart(command, result.status);
        if (result.timedOut) {
            *startFailure = "The command ran too long and was killed: " + command.command;
        }
    }
    return result.status;
}

}  // namespace Vesk
