#include "tools/support/libraries.h"

#include <algorithm>
#include <unordered_set>

namespace Vesk {

namespace {

constexpr std::string_view kSuffixes[] = {".so", ".dylib", ".dll.a", ".a"};

/// Where the system's loader looks anyway.
bool isSystemDirectory(std::string_view directory) noexcept {
    return directory.starts_with("/lib") || directory.starts_with("/usr/lib");
}

/// Which form of a library the linker takes depends on its flags. Tells whether this directory is
/// enough; a static library may be wanted that lies elsewhere.
bool takeForms(const std::string& stem, std::vector<std::string>& found) {
    bool isStatic = false;
    for (const std::string_view suffix : kSuffixes) {
        if (std::string path = stem + std::string(suffix); isFile(path)) {
            found.push_back(std::move(path));
            isStatic = isStatic || suffix.ends_with(".a");
        }
    }
    return isStatic;
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

bool isLibraryPath(std::string_view entry) noexcept {
    return !entry.starts_with('-') && entry.find_first_of("/\\") != std::string_view::npos;
}

std::vector<std::string> libraryCandidates(const std::vector<std::string>& directories,
                                           const std::vector<std::string>& names,
                                           const std::string& root) {
    std::vector<std::string> files;
    for (std::string name : names) {
        if (isLibraryPath(name)) {
            files.push_back(normalPath(name, root));
            continue;
        }
        name.erase(0, name.starts_with("-l") ? 2 : name.starts_with(":") ? 1 : 0);
        for (const std::string& directory : directories) {
            for (const std::string_view suffix : kSuffixes) {
                files.push_back(directory + "/lib" + name + std::string(suffix));
            }
            files.push_back(directory + "/" + name);
            files.push_back(directory + "/" + name + ".lib");
        }
    }
    return files;
}

std::vector<std::string> librariesIn(const std::vector<std::string>& directories,
                                     const std::vector<std::string>& names,
                                     const std::string& root) {
    std::vector<std::string> found;
    const auto takeFile = [&found](std::string path) {
        const bool there = isFile(path);
        if (there) {
            found.push_back(std::move(path));
        }
        return there;
    };
    for (const std::string& entry : names) {
        if (isLibraryPath(entry)) {
            takeFile(normalPath(entry, root));
            continue;
        }
        std::string_view name = entry;
        if (name.starts_with("-l")) {
            name.remove_prefix(2);
        }
        if (name.empty() || name.front() == '-') {
            continue;  // another linker option
        }
        for (const std::string& directory : directories) {
            if (name.front() == ':' ? takeFile(directory + "/" + std::string(name.substr(1)))
                                    : takeForms(directory + "/lib" + std::string(name), found)) {
                break;
            }
        }
    }
    return found;
}

std::vector<std::string> runPaths(const std::vector<std::string>& libraries,
                                  const std::string& directory, const std::string& origin,
                                  const TargetPaths& paths) {
    std::vector<std::string> found;
    for (const std::string& library : libraries) {
        const std::string place = library.substr(0, library.rfind('/'));
        if (!isSharedLibrary(library) || isSystemDirectory(place)) {
            continue;
        }
        const bool ours = paths.inCommand(place) != place;
        const std::string way = ours ? relativePath(place, directory) : place;
        std::string path = ours ? (way == "." ? origin : origin + "/" + way) : way;
        if (std::ranges::find(found, path) == found.end()) {
            found.push_back(std::move(path));
        }
    }
    return found;
}

}  // namespace Vesk
