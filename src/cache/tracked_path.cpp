#include "cache/tracked_path.h"

#include <algorithm>

#include "base/ci_string.h"
#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {

std::string trackedPath(const std::filesystem::path& path) {
    const std::filesystem::path absolute =
        path.is_absolute() ? path : std::filesystem::absolute(path);
    std::u8string generic = absolute.generic_u8string();
    return {generic.begin(), generic.end()};
}

std::string trackedPath(const std::string& path, const std::filesystem::path& base) {
    if (!platform::isAbsolutePath(path)) {
        return trackedPath(base / platform::pathFromUtf8(path));
    }
    std::string tracked = path;  // the usual case, and there are many of them
    if (platform::kWindows) {
        std::ranges::replace(tracked, '\\', '/');
    }
    return tracked;
}

std::string namesPath(std::string_view directory) {
    return std::string(directory).append("/*");
}

bool isNamesPath(std::string_view path) noexcept {
    return path == "*" || path.ends_with("/*");
}

std::string_view directoryOf(std::string_view path) noexcept {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

namespace {

/// Some compilers on Windows report all names in lower case.
bool beginsWith(std::string_view path, std::string_view start) noexcept {
    const std::string_view head = path.substr(0, start.size());
    return platform::kWindows ? equalsIgnoringCase(head, start) : head == start;
}

}  // namespace

bool isBelow(std::string_view path, std::string_view directory) noexcept {
    return path.size() > directory.size() && path[directory.size()] == '/' &&
           beginsWith(path, directory);
}

bool isBelowAny(std::string_view path, const std::vector<std::string>& directories) noexcept {
    return std::ranges::any_of(
        directories, [path](const std::string& directory) { return isBelow(path, directory); });
}

TrackingRoot::TrackingRoot(const std::filesystem::path& directory)
    : directory_(directory), prefix_(trackedPath(directory)) {
    if (!prefix_.ends_with('/')) {
        prefix_ += '/';
    }
}

std::string_view TrackingRoot::stored(std::string_view path) const {
    return beginsWith(path, prefix_) ? path.substr(prefix_.size()) : path;
}

std::string TrackingRoot::absolute(std::string_view stored) const {
    if (platform::isAbsolutePath(stored)) {
        return std::string(stored);
    }
    std::string path;
    path.reserve(prefix_.size() + stored.size());
    path.append(prefix_).append(stored);
    return path;
}

}  // namespace Vesk
