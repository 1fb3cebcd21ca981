// Patterns for files: "src/*.c", "src/**/*.cpp".
//
// `*` stands for any characters except a slash, `?` for one of them, and a part `**` for any number
// of directories. Only parts that begin with a dot match names that do. On Windows case does not
// matter. Links to directories are followed, but not by `**`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

bool isPattern(std::string_view text) noexcept;

/// The files that match an absolute pattern with forward slashes, ordered by name. `**` does not
/// enter the directory `skipped`. Throws VeskException for a directory that cannot be read.
std::vector<std::string> filesMatching(const std::string& pattern, const std::string& skipped);

/// Whether an absolute path matches an absolute pattern.
bool pathMatches(std::string_view path, std::string_view pattern) noexcept;

}  // namespace Vesk
