#include "tools/support/target_paths.h"

#include <algorithm>
#include <fmt/format.h>
#include <xxhash.h>

#include "base/exception.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/support/file_patterns.h"
#include "tools/support/value_lists.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

namespace fs = std::filesystem;

bool beginsWith(std::string_view text, std::string_view start) noexcept {
    const std::string_view head = text.substr(0, start.size());
    return platform::kWindows ? equalsIgnoringCase(head, start) : head == start;
}

/// The part of `path` below `directory`; empty if it does not lie there.
std::string_view below(const std::string& directory, std::string_view path) noexcept {
    const bool inside = path.size() > directory.size() + 1 && path[directory.size()] == '/' &&
                        beginsWith(path, directory);
    return inside ? path.substr(directory.size() + 1) : std::string_view();
}

/// The same target with other arguments makes other objects.
std::string argumentsMark(const TargetContext& target) {
    std::string arguments;
    for (const std::string& parameter : target.target().parameters) {
        arguments.append(target.textOf(parameter).value_or("")).append(1, '\0');
    }
    return arguments.empty()
               ? arguments
               : fmt::format("-{:016x}", XXH3_64bits(arguments.data(), arguments.size()));
}

std::string objectDirectoryOf(const TargetContext& target, const std::string& outputDirectory) {
    const std::string& name = target.displayName();
    const std::size_t colons = name.find("::");
    std::string directory = outputDirectory + "/.obj/";
    if (colons == std::string::npos) {
        directory += name;
    } else {
        directory.append(name, 0, colons).append(1, '/').append(name, colons + 2);
    }
    return directory + argumentsMark(target);
}

std::string textDirectoryOf(const TargetContext& target, const std::string& root) {
    const auto& file = target.target().file;
    return file ? normalPath(platform::pathToUtf8(fs::absolute(*file).parent_path())) : root;
}

/// The name of a directory in the object directory. ".." becomes "__", so names made of underscores
/// get one more; a drive loses its colon.
void appendMirrored(std::string& path, std::string_view part) {
    if (part == "..") {
        path += "__";
        return;
    }
    for (const char c : part) {
        if (c != ':') {
            path += c;
        }
    }
    if (part.size() > 1 && part.find_first_not_of('_') == std::string_view::npos) {
        path += '_';
    }
}

}  // namespace

std::string normalPath(std::string_view path, std::string_view base) {
    std::string text;
    if (!base.empty() && !platform::isAbsolutePath(path)) {
        text.append(base).append(1, '/');
    }
    text += path;
    if (platform::kWindows) {
        std::ranges::replace(text, '\\', '/');
    }
    if (text.find("/.") != std::string::npos || text.find("//", 1) != std::string::npos) {
        const fs::path normal = platform::pathFromUtf8(text).lexically_normal();
        text = platform::pathToUtf8(normal);
        if (platform::kWindows) {
            std::ranges::replace(text, '\\', '/');
        }
    }
    while (text.size() > 1 && text.back() == '/') {
        text.pop_back();
    }
    return text;
}

std::string relativePath(const std::string& path, const std::string& from) {
    if (const std::string_view inside = below(from, path); !inside.empty()) {
        return std::string(inside);
    }
    const fs::path relative =
        platform::pathFromUtf8(path).lexically_relative(platform::pathFromUtf8(from));
    if (relative.empty()) {
        return path;
    }
    std::string text = platform::pathToUtf8(relative);
    if (platform::kWindows) {
        std::ranges::replace(text, '\\', '/');
    }
    return text;
}

TargetPaths::TargetPaths(const TargetContext& target, const BuildEnv& environment)
    : target_(target),
      root_(normalPath(platform::pathToUtf8(fs::absolute(
          environment.settings().projectRoot.empty() ? fs::path(".")
                                                     : environment.settings().projectRoot)))),
      outputDirectory_(normalPath(platform::pathToUtf8(environment.outputDirectory()), root_)),
      objectDirectory_(objectDirectoryOf(target, outputDirectory_)),
      textDirectory_(textDirectoryOf(target, root_)) {}

std::string TargetPaths::absolute(std::string_view name) const {
    return normalPath(name, textDirectory_);
}

std::vector<std::string> TargetPaths::absolute(const std::vector<std::string>& names) const {
    std::vector<std::string> paths;
    paths.reserve(names.size());
    for (const std::string& name : names) {
        paths.push_back(absolute(name));
    }
    return paths;
}

std::vector<std::string> TargetPaths::files(std::string_view variable) const {
    std::vector<std::string> paths;
    for (const std::string& name : entriesOf(target_, variable)) {
        std::string path = absolute(name);
        if (!isPattern(name)) {
            paths.push_back(std::move(path));
            continue;
        }
        std::vector<std::string> found = filesMatching(path, outputDirectory_);
        if (found.empty()) {
            throw VeskException(
                fmt::format("No file matches the pattern '{}' in {}. It was searched for as '{}'.",
                            name, variable, path));
        }
        std::ranges::move(found, std::back_inserter(paths));
    }
    return paths;
}

std::string TargetPaths::inCommand(const std::string& path) const {
    const std::string_view inside = below(root_, path);
    if (!inside.empty()) {
        const bool special = inside.front() == '-' || inside.front() == '@';
        return (special ? "./" : "") + std::string(inside);
    }
    return path == root_ ? "." : path;
}

std::vector<std::string> TargetPaths::inCommand(const std::vector<std::string>& paths) const {
    std::vector<std::string> names;
    names.reserve(paths.size());
    for (const std::string& path : paths) {
        names.push_back(inCommand(path));
    }
    return names;
}

std::string TargetPaths::objectStem(const std::string& source) const {
    std::string stem = objectDirectory_;
    const std::string relative = relativePath(source, root_);
    for (std::size_t start = 0; start < relative.size();) {
        const std::size_t end = std::min(relative.find('/', start), relative.size());
        if (end > start) {
            stem += '/';
            appendMirrored(stem, std::string_view(relative).substr(start, end - start));
        }
        start = end + 1;
    }
    return stem;
}

std::string TargetPaths::inOutputDirectory(const std::string& name) const {
    std::string path = normalPath(name, outputDirectory_);
    if (below(outputDirectory_, path).empty()) {
        throw VeskException(fmt::format(
            "OUTPUT_NAME '{}' leads out of the output directory '{}'. The directory is chosen with "
            "OUTPUT_DIR.",
            name, outputDirectory_));
    }
    return path;
}

std::string nativePath(std::string path) {
    if (platform::kWindows) {
        std::ranges::replace(path, '/', '\\');
    }
    return path;
}

bool isFile(const std::string& path) {
    const auto status = platform::fileStatus(platform::pathFromUtf8(path));
    return status && !status->directory;
}

ValuePtr pathValue(const std::string& path) {
    return std::make_shared<VeskPathString>(nativePath(path), fs::path());
}

ValuePtr pathValues(const std::vector<std::string>& paths) {
    auto list = std::make_shared<VeskList>();
    list->items.reserve(paths.size());
    for (const std::string& path : paths) {
        list->items.push_back(pathValue(path));
    }
    return list;
}

}  // namespace Vesk
