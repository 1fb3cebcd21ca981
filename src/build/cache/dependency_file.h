// Dependency files, by which compilers tell what they have read.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// The prerequisites of the first rule in a makefile as compilers write it, in order and as they
/// are spelled there: `\ ` is a blank, `\#` a #, `$$` a $, a backslash at a line's end goes on in
/// the next line, and every other backslash is a part of the name.
std::vector<std::string> prerequisites(std::string_view makefile);

/// The same from a file; nothing when it cannot be read.
std::optional<std::vector<std::string>> readDependencyFile(const std::filesystem::path& file);

}  // namespace Vesk
