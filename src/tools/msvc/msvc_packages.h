// Installed libraries that pkg-config knows, for Microsoft's compilers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// pkg-config's words, which are GCC's options, as the compiler takes them: definitions and
/// directories of headers. Others mean nothing to it and are left out.
std::vector<std::string> msvcCompileWords(const std::vector<std::string>& words);

/// What packages are linked with.
struct PackageLibraries {
    std::vector<std::string> directories;
    std::vector<std::string> names;  ///< of files, with their suffix
};

/// The same for the linker. Libraries that belong to the C library here have no file.
PackageLibraries msvcLibraries(const std::vector<std::string>& words);

/// The file of a library that options and LIBS call by its name; empty if it belongs to the C
/// library.
std::string libraryFileOf(std::string_view name);

}  // namespace Vesk
