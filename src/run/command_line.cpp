#include "run/command_line.h"

#include <algorithm>
#include <utility>

#include "base/ci_string.h"
#include "platform/environment.h"
#include "platform/system.h"

namespace Vesk {

namespace {

// Both ends are blanks: a program stands before it, a command after it.
constexpr std::string_view kPowershellOptions =
    " -NoProfile -NonInteractive -ExecutionPolicy Bypass -Command ";

/// What the shells that are installed as /bin/sh do themselves, or do something else for.
bool isShellWord(std::string_view word) noexcept {
    static constexpr std::string_view kWords[] = {
        ".",         ":",        "alias",  "bg",      "bind",     "break",    "builtin", "caller",
        "case",      "cd",       "chdir",  "command", "compgen",  "complete", "compopt", "continue",
        "coproc",    "declare",  "dirs",   "disown",  "do",       "done",     "echo",    "elif",
        "else",      "enable",   "esac",   "eval",    "exec",     "exit",     "export",  "false",
        "fc",        "fg",       "fi",     "for",     "function", "getopts",  "hash",    "help",
        "history",   "if",       "in",     "jobs",    "kill",     "let",      "local",   "logout",
        "mapfile",   "newgrp",   "popd",   "print",   "printf",   "pushd",    "pwd",     "read",
        "readarray", "readonly", "return", "select",  "set",      "shift",    "shopt",   "source",
        "suspend",   "test",     "then",   "time",    "times",    "trap",     "true",    "type",
        "typeset",   "ulimit",   "umask",  "unalias", "unset",    "until",    "wait",    "whence",
        "while",
    };
    return std::ranges::binary_search(kWords, word);
}

/// Whether a character outside quotes stands for itself.
bool isPlain(char c) noexcept {
    constexpr std::string_view kSigns = "_@%+=:,./-";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) >= 0x80 || kSigns.find(c) != std::string_view::npos;
}

/// Reads one word off a command text. False when a shell has to.
bool takeWord(std::string_view& rest, std::string& word) {
    while (!rest.empty() && rest.front() != ' ') {
        const char c = rest.front();
        if (c != '"' && c != '\'') {
            if (!isPlain(c)) {
                return false;
            }
            word += c;
            rest.remove_prefix(1);
            continue;
        }
        const std::size_t end = rest.find(c, 1);
        const std::string_view quoted = rest.substr(1, end == std::string_view::npos ? 0 : end - 1);
        if (end == std::string_view::npos ||
            (c == '"' && quoted.find_first_of("$`\\!") != std::string_view::npos)) {
            return false;
        }
        word += quoted;
        rest.remove_prefix(end + 1);
    }
    return true;
}

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

std::vector<std::string> directArguments(std::string_view text) {
    std::vector<std::string> words;
    if (text.find('\0') != std::string_view::npos) {
        return {};
    }
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        if (text.empty()) {
            return words;
        }
        if (!takeWord(text, words.emplace_back())) {
            return {};
        }
        const std::string& program = words.front();
        // An assignment, an option of the shell's, or nothing at all.
        if (words.size() == 1 && (program.empty() || program.find('=') != std::string::npos ||
                                  program.front() == '-' || isShellWord(program))) {
            return {};
        }
    }
}

std::vector<std::string> environmentOf(std::vector<std::string> entries,
                                       const std::vector<std::string>& variables) {
    if (platform::kWindows) {
        return environmentWith(std::move(entries), variables);
    }
    for (const std::string& variable : variables) {
        const std::string_view name = std::string_view(variable).substr(0, variable.find('=') + 1);
        std::erase_if(entries, [name](std::string_view entry) { return entry.starts_with(name); });
        entries.push_back(variable);
    }
    return entries;
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
