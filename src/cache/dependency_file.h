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

/// The files that a report of Microsoft's compilers in JSON (/sourceDependencies) names, the source
/// left out. Nothing when it is no such report.
std::optional<std::vector<std::string>> reportedDependencies(std::string_view json);

/// The files in the notes that the same compilers write (/showIncludes), whatever the language of
/// their words: what follows the last colon and blank of each line.
std::vector<std::string> includeNotes(std::string_view text);

/// What a dependency file names. Its ending tells its form: ".json" a report, ".notes" notes, all
/// others a makefile. Nothing when it cannot be read.
std::optional<std::vector<std::string>> readDependencyFile(const std::filesystem::path& file);

}  // namespace Vesk
