// The texts that start a command: command lines, argument vectors and the child's environment.
//
// Except for COMSPEC, which `commandInterpreter` reads, nothing here depends on the system, so that
// the rules of both are checked on both.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// One argument as the C runtime of Windows reads it back. Always in quotes; backslashes are
/// doubled only before a quote.
std::string quoteArgument(std::string_view text);

/// The command interpreter of Windows: COMSPEC, or "cmd.exe" when that is unset or empty.
std::string commandInterpreter();

/// "interpreter" /D /C "text" for the interpreter above; it drops the outer quotes itself.
std::string interpreterCommandLine(std::string_view text);

std::string powershellCommandLine(std::string_view text);

/// What POSIX starts instead: /bin/sh -c, and pwsh with the same options as on Windows.
std::vector<std::string> interpreterArguments(std::string_view text);
std::vector<std::string> powershellArguments(std::string_view text);

/// The words of a command text, if a POSIX shell would do nothing but start the program that the
/// first one names with the others as its arguments; empty when it needs the shell.
std::vector<std::string> directArguments(std::string_view text);

/// `entries` ("NAME=value") with `variables`, which replace those of their names in any letter
/// case.
std::vector<std::string> environmentWith(std::vector<std::string> entries,
                                         const std::vector<std::string>& variables);

/// The same, with names that are compared as the system compares them.
std::vector<std::string> environmentOf(std::vector<std::string> entries,
                                       const std::vector<std::string>& variables);

/// A child's environment: `entries` ("NAME=value") without those that begin with PATH= in any
/// letter case, and with a new PATH= of the search directories followed by `path`, if that is not
/// empty. Sorted without regard to ASCII case over the whole entry, as Windows expects.
std::vector<std::string> environmentWithPath(std::vector<std::string> entries,
                                             const std::vector<std::string>& searchDirectories,
                                             std::string_view path, char separator);

}  // namespace Vesk
