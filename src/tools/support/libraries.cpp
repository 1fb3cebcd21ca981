#include "tools/support/libraries.h"

#include <algorithm>
#include <unordered_set>

namespace Vesk {

namespace {

/// Where the system's own loader looks anyway.
bool isSystemFolder(std::string_view folder) noexcept {
    return folder.starts_with("/lib") || folder.starts_with("/usr/lib");
}

}  // namespace

std::vector<std::string> atLastPlace(std::vector<std::string> names) {
    std::unordered_set<std::string_view> seen;
    std::vector<std::string> kept;
    kept.reserve(names.size());
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (seen.insert(*name).second) {
            kept.push_back(*name);
        }
    }
    std::ranges::reverse(kept);
    return kept;
}

bool isSharedLibrary(std::string_view file) noexcept {
    const std::string_view name = file.substr(file.rfind('/') + 1);
    return name.ends_with(".so") || name.find(".so.") != std::string_view::npos ||
           name.ends_with(".dylib") || name.ends_with(".dll") || name.ends_with(".dll.a");
}

std::vector<std::string> librariesIn(const std::vector<std::string>& folders,
                                     const std::vector<std::string>& names) {
    constexpr std::string_view kEndings[] = {".so", ".dll.a", ".a", ".dylib"};
    std::vector<std::string> found;
    for (const std::string& name : names) {
        for (const std::string& folder : folders) {
            const std::string stem = folder + "/lib" + name;
            const auto ending = std::ranges::find_if(kEndings, [&stem](std::string_view each) {
                return isFile(stem + std::string(each));
            });
            if (ending != std::end(kEndings)) {
                found.push_back(stem + std::string(*ending));
                break;
            }
        }
    }
    return found;
}

std::vector<std::string> runPaths(const std::vector<std::string>& libraries,
                                  const std::string& folder, const std::string& origin,
                                  const TargetPaths& paths) {
    std::vector<std::string> found;
    for (const std::string& library : libraries) {
        const std::string place = library.substr(0, library.rfind('/'));
        if (!isSharedLibrary(library) || isSystemFolder(place)) {
            continue;
        }
        const bool ours = paths.inCommand(place) != place;
        const std::string way = ours ? relativePath(place, folder) : place;
        std::string path = ours ? (way == "." ? origin : origin + "/" + way) : way;
        if (std::ranges::find(found, path) == found.end()) {
            found.push_back(std::move(path));
        }
    }
    return found;
}

}  // namespace Vesk
