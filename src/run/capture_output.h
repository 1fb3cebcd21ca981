// Asking a program something.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/process.h"

namespace Vesk {

struct ProgramAnswer {
    int status = -1;  ///< the exit code; negative where the program could not be started
    std::string text;
};

/// What the program writes to standard output, as it is, with its standard error thrown away.
/// `arguments` as below. There is no time limit.
ProgramAnswer askProgram(const std::filesystem::path& program, std::string_view arguments,
                         platform::Dependence dependence);

/// What the program writes to standard output, without blanks and line ends at both ends. Empty on
/// every failure: ask with arguments whose answer is never empty. `arguments` is a piece of a
/// command text, passed on as it stands; what the shell treats specially in it must be quoted
/// already. With `discardErrors` the program's standard error is thrown away. There is no time
/// limit.
std::string captureOutput(const std::filesystem::path& program, std::string_view arguments,
                          bool discardErrors);

}  // namespace Vesk
