// Dependency files, in which compilers report what they have read.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// The prerequisites of the first rule in a makefile written by a compiler, in order and as
/// spelled: `\ ` is a blank, `\#` a #, `$$` a $; a backslash at a line's end continues the line,
/// and every other backslash is part of the name.
std::vector<std::string> prerequisites(std::string_view makefile);

/// The files named in a JSON report of Microsoft's compilers (/sourceDependencies), without the
/// source. Nothing if the text is not such a report.
std::optional<std::vector<std::string>> reportedDependencies(std::string_view json);

/// The files in the lines that these compilers write with /showIncludes, in any language: what
/// follows the last colon and blank of each line.
std::vector<std::string> includeNotes(std::string_view text);

/// The files named in a dependency file. The extension tells its form: ".json" is a report,
/// ".notes" the lines of /showIncludes, anything else a makefile. Nothing if it cannot be read.
std::optional<std::vector<std::string>> readDependencyFile(const std::filesystem::path& file);

}  // namespace Vesk
