#include "project/project_paths.h"

#include "platform/files.h"
#include "platform/path_key.h"
#include "project/project.h"

namespace Vesk {

namespace fs = std::filesystem;

fs::path pathWrittenIn(const fs::path& directory, const std::string& text) {
    const fs::path path = platform::pathFromUtf8(text);
    return (platform::isAbsolutePath(text) ? path : directory / path).lexically_normal();
}

fs::path projectFileAt(const fs::path& path) {
    return platform::isDirectory(path) ? path / kProjectFileName : path;
}

fs::path canonicalPath(const fs::path& path) {
    std::error_code error;
    fs::path canonical = platform::canonicalPath(path, error);
    if (error) {
        throw fs::filesystem_error("weakly_canonical", path, error);
    }
    return canonical;
}

std::string fileIdentity(const fs::path& path) {
    return platform::pathKey(canonicalPath(path));
}

std::string placeOf(const fs::path& file, std::uint32_t line) {
    return platform::pathToUtf8(file) + ":" + std::to_string(line);
}

}  // namespace Vesk
