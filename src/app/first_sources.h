// What is in a directory for which there is no unit file yet: C and C++ sources, and what they tell
// of programs and headers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// What a source is there for, as far as its directory and the other sources tell.
enum class SourceRole : std::uint8_t {
    Own,       ///< of the project itself
    Example,   ///< in a directory of examples
    Aside,     ///< in a directory that others build, if anybody: contrib, documentation, fuzzing
    Fragment,  ///< nothing but text that another source includes
};

/// Paths are relative to the directory that was looked through, with slashes.
struct FirstSource {
    std::string path;
    bool cpp = false;
    bool hasMain = false;
    SourceRole role = SourceRole::Own;
    std::string apart = {};  ///< the directory of an example, or of what is aside
};

/// A header that is not there before somebody has made it.
struct UnmadeHeader {
    std::string name;      ///< as it is included
    std::string madeFrom;  ///< "src/config.h.in"
};

struct FirstSources {
    std::vector<FirstSource> sources;             ///< in the order of their paths
    std::vector<std::string> includeDirectories;  ///< that their #include lines need
    std::vector<UnmadeHeader> unmade;
    bool usesMath = false;  ///< <math.h>, a library of its own on POSIX
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
