#include "tools/support/run_step.h"

#include <fmt/format.h>
#include <system_error>

#include "base/exception.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "run/run_command.h"

namespace Vesk {

void runOrThrow(const Recipe& recipe) {
    std::string failure;
    const std::int32_t status = runCommand(recipe, &failure);
    if (!failure.empty()) {
        throw VeskException(failure);
    }
    if (status != 0) {
        throw VeskException(
            fmt::format("Command ended with status {}: {}", status, recipe.command));
    }
}

void renewFolder(const std::filesystem::path& folder) {
    std::error_code error;
    platform::removeTree(folder, error);
    if (!error) {
        platform::makeFolders(folder, error);
    }
    if (error) {
        throw VeskException(fmt::format("Unable to make the folder '{}' anew: {}.",
                                        platform::pathToUtf8(folder), error.message()));
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
