#include "project/user_data.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

std::optional<fs::path> directoryNamedBy(const char* variable) {
    const auto value = platform::environmentVariable(variable);
    if (!value || value->empty()) {
        return std::nullopt;
    }
    return platform::pathFromUtf8(*value);
}

}  // namespace

fs::path userDataPath() {
    if (const auto appData = directoryNamedBy("APPDATA")) {
        return *appData / "vesk";
    }
    if (const auto profile = directoryNamedBy("USERPROFILE")) {
        return *profile / "AppData" / "Local" / "vesk";
    }
    if (!platform::kWindows) {
        if (const auto config = directoryNamedBy("XDG_CONFIG_HOME")) {
            return *config / "vesk";
        }
        if (const auto home = directoryNamedBy("HOME")) {
            return *home / ".config" / "vesk";
        }
    }
    throw std::runtime_error("Unable to resolve %APPDATA% path.");
}

fs::path userDataDirectory() {
    fs::path directory = userDataPath();
    std::error_code error;
    platform::makeDirectories(directory, error);
    if (error) {
        throw fs::filesystem_error("create_directories", directory, error);
    }
    return directory;
}

}  // namespace Vesk
