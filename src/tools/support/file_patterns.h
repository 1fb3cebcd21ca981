// Patterns for files: "src/*.c", "src/**/*.cpp".
//
// `*` stands for any characters but a slash, `?` for one of them, and a part `**` for any number of
// directories. Names that begin with a dot are met only by parts that do. On Windows case does not
// matter. Links to directories are followed, but not by `**`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

bool isPattern(std::string_view text) noexcept;

/// The files that an absolute pattern with forward slashes meets, in the order of their names.
/// `**` stays out of the directory `skipped`. Throws VeskException for a directory that cannot be
/// read.
std::vector<std::string> filesMatching(const std::string& pattern, const std::string& skipped);

/// Whether an absolute path meets an absolute pattern.
bool pathMatches(std::string_view path, std::string_view pattern) noexcept;

}  // namespace Vesk
