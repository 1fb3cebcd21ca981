#include "tools/msvc/version_folders.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/files.h"
#include "tools/c_family/version.h"

namespace Vesk {

std::vector<std::string> subfolders(const std::string& folder) {
    namespace fs = std::filesystem;
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator at(platform::pathFromUtf8(folder), error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        std::error_code unknown;
        if (at->is_directory(unknown)) {
            names.push_back(platform::pathToUtf8(at->path().filename()));
        }
    }
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> versionFolders(const std::string& folder) {
    std::vector<std::string> names = subfolders(folder);
    std::erase_if(names, [](const std::string& name) { return name[0] < '0' || name[0] > '9'; });
    std::ranges::stable_sort(names, [](const std::string& a, const std::string& b) {
        return compareVersions(a, b) > 0;
    });
    return names;
}

bool isFolder(const std::string& path) {
    const auto status = platform::fileStatus(platform::pathFromUtf8(path));
    return status && status->directory;
}

}  // namespace Vesk
