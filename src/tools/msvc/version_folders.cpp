#include "tools/msvc/version_folders.h"

#include <algorithm>
#include <system_error>

#include "platform/files.h"
#include "platform/folders.h"
#include "tools/discovery/version.h"

namespace Vesk {

std::vector<std::string> subfolders(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (platform::FolderEntry& entry :
         platform::listFolder(platform::pathFromUtf8(folder), ignored)) {
        if (entry.folder) {
            names.push_back(std::move(entry.name));
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
    return platform::isFolder(platform::pathFromUtf8(path));
}

}  // namespace Vesk
