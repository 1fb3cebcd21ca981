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
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/process.h"
#include "platform/system.h"
#include "run/command_line.h"

namespace Vesk {

namespace {

bool usesPowershell(const Recipe& recipe) {
    return recipe.shell == shell::kPowershell;
}

/// A variable as the recipe's children see it; empty without one.
std::string variableFor(const Recipe& recipe, const std::string& name) {
    const std::string start = name + "=";
    for (const std::string& variable : recipe.environment) {
        if (platform::kWindows ? equalsIgnoringCase(variable.substr(0, start.size()), start)
                               : variable.starts_with(start)) {
            return variable.substr(start.size());
        }
    }
    return platform::environmentVariable(name).value_or("");
}

/// Nothing for children that inherit ours.
std::optional<std::vector<std::string>> environmentFor(const Recipe& recipe) {
    const bool ownPath = !recipe.searchDirectories.empty() || recipe.surroundings;
    if (!ownPath && recipe.environment.empty()) {
        return std::nullopt;
    }
    std::vector<std::string> entries =
        environmentOf(platform::environmentEntries(), recipe.environment);
    if (!ownPath) {
        return entries;
    }
    if (recipe.surroundings) {
        entries = environmentWith(std::move(entries), recipe.surroundings->variables);
    }
    std::vector<std::string> directories;
    directories.reserve(recipe.searchDirectories.size());
    for (const std::filesystem::path& directory : recipe.searchDirectories) {
        directories.push_back(platform::pathToUtf8(directory));
    }
    return environmentWithPath(std::move(entries), directories, variableFor(recipe, "PATH"),
                               platform::kPathListSeparator);
}

platform::ProcessRequest requestFor(const Recipe& recipe) {
    platform::ProcessRequest request;
    if constexpr (platform::kWindows) {
        request.commandLine = usesPowershell(recipe) ? powershellCommandLine(recipe.command)
                                                     : interpreterCommandLine(recipe.command);
    } else if (usesPowershell(recipe)) {
        request.arguments = powershellArguments(recipe.command);
    } else {
        request.arguments = interpreterArguments(recipe.command);
        request.directArguments = directArguments(recipe.command);
    }
    request.workingDirectory = recipe.workingDirectory;
    request.environment = environmentFor(recipe);
    if (console::collects()) {
        request.output = console::writeOutput;
    }
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

bool exceedsInterpreter(const Recipe& recipe) {
    if (!platform::kWindows || usesPowershell(recipe) ||
        recipe.command.size() <= kMaxInterpreterText) {
        return false;
    }
    const std::string name =
        platform::pathToUtf8(platform::pathFromUtf8(commandInterpreter()).filename());
    return equalsIgnoringCase(name, "cmd.exe") &&
           characterCount(recipe.command) > kMaxInterpreterText;
}

std::string startedProgram(const Recipe& recipe) {
    if (usesPowershell(recipe)) {
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

std::string explainStart(const Recipe& recipe, int code) {
    if (platform::interruptSignal() != 0) {
        return "The command was not started: vesk was interrupted.";
    }
    if (std::string fault = directoryFault(recipe.workingDirectory); !fault.empty()) {
        return fault;
    }
    const std::string where =
        recipe.workingDirectory.empty()
            ? ""
            : fmt::format(" in '{}'", platform::pathToUtf8(recipe.workingDirectory));
    return fmt::format("{} '{}' could not be started{}: {} (code {}).{}",
                       usesPowershell(recipe) ? "PowerShell" : "Command interpreter",
                       startedProgram(recipe), where, platform::systemErrorText(code), code,
                       usesPowershell(recipe) ? " Is it installed and in PATH?" : "");
}

/// Why a value that the command text refers to cannot be had, if so. The interpreter of Windows
/// puts it between quotes before anything reads them.
std::string secretFault(const Recipe& recipe) {
    for (const std::string& name : recipe.secretVariables) {
        const std::string value = variableFor(recipe, name);
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

// With which the system calls a value bad (ERROR_BAD_ENVIRONMENT, EINVAL).
constexpr std::int32_t kBadEnvironment = platform::kWindows ? 10 : 22;

}  // namespace

std::int32_t runCommand(const Recipe& recipe, std::string* startFailure) {
    console::normal("{}", recipe.command);
    if (exceedsInterpreter(recipe)) {
        if (startFailure != nullptr) {
            *startFailure = fmt::format(
                "The command has {} characters, the command interpreter takes at most {}. Pass the "
                "arguments in a response file.",
                characterCount(recipe.command), kMaxInterpreterText);
        }
        return kTooLong;
    }
    if (std::string fault = secretFault(recipe); !fault.empty()) {
        if (startFailure != nullptr) {
            *startFailure = std::move(fault);
        }
        return kBadEnvironment;
    }
    if (!console::collects()) {
        console::flush();
    }
    const platform::ProcessResult result = platform::runProcess(requestFor(recipe));
    if (startFailure != nullptr) {
        *startFailure = result.started ? std::string() : explainStart(recipe, result.status);
    }
    return result.status;
}

}  // namespace Vesk
