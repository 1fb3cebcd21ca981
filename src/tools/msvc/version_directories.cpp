#include "tools/msvc/version_directories.h"

#include <algorithm>
#include <system_error>

#include "platform/directories.h"
#include "platform/files.h"
#include "tools/discovery/version.h"

namespace Vesk {

std::vector<std::string> subdirectories(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (platform::DirectoryEntry& entry :
         platform::listDirectory(platform::pathFromUtf8(directory), ignored)) {
        if (entry.directory) {
            names.push_back(std::move(entry.name));
        }
    }
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> versionDirectories(const std::string& directory) {
    std::vector<std::string> names = subdirectories(directory);
    std::erase_if(names, [](const std::string& name) { return name[0] < '0' || name[0] > '9'; });
    std::ranges::stable_sort(names, [](const std::string& a, const std::string& b) {
        return compareVersions(a, b) > 0;
    });
    return names;
}

bool isDirectory(const std::string& path) {
    return platform::isDirectory(platform::pathFromUtf8(path));
}

}  // namespace Vesk
