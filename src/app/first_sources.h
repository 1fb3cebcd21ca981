// What is in a directory for which there is no unit file yet: C and C++ sources, and what they tell
// of programs and headers.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// Paths are relative to the directory that was looked through, with slashes.
struct FirstSource {
    std::string path;
    bool cpp = false;
    bool hasMain = false;
};

struct FirstSources {
    std::vector<FirstSource> sources;             ///< in the order of their paths
    std::vector<std::string> includeDirectories;  ///< that their #include lines need
    bool usesMath = false;                        ///< <math.h>, a library of its own on POSIX
};

/// Looks through the directory and those below it, without hidden ones, links and what builds leave
/// there. Directories and files that cannot be read are left out.
FirstSources findFirstSources(const std::filesystem::path& directory);

/// What one source says.
struct SourceOutline {
    bool hasMain = false;                ///< the function is defined, not only declared
    std::vector<std::string> quoted;     ///< #include "..."
    std::vector<std::string> bracketed;  ///< #include <...>
};

SourceOutline outlineOf(std::string_view text);

}  // namespace Vesk
