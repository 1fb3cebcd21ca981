#include "tools/support/run_step.h"

#include <fmt/format.h>
#include <system_error>

#include "base/exception.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "run/run_command.h"

namespace Vesk {

void runOrThrow(const Command& command) {
    std::string failure;
    const std::int32_t status = runCommand(command, &failure);
    if (!failure.empty()) {
        throw VeskException(failure);
    }
    if (status != 0) {
        throw VeskException(
            fmt::format("Command ended with status {}: {}", status, command.command));
    }
}

void renewDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    platform::removeTree(directory, error);
    if (!error) {
        platform::makeDirectories(directory, error);
    }
    if (error) {
        throw VeskException(fmt::format("Unable to recreate the directory '{}': {}.",
                                        platform::pathToUtf8(directory), error.message()));
    }
}

void writeArguments(const std::string& file, std::string_view text) {
    std::error_code error;
    if (!platform::writeWholeFile(platform::pathFromUtf8(file), text, platform::Append::no,
                                  error)) {
        throw VeskException(fmt::format("Unable to write '{}': {}.", file, error.message()));
    }
}

}  // namespace Vesk
