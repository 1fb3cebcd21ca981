// Directories named by version numbers, as in Visual Studio and the kits.
#pragma once

#include <string>
#include <vector>

namespace Vesk {

/// The names of the subdirectories in alphabetical order. Empty for a directory that cannot be
/// read.
std::vector<std::string> subdirectories(const std::string& directory);

/// Those that begin with a digit, highest version first.
std::vector<std::string> versionDirectories(const std::string& directory);

bool isDirectory(const std::string& path);

}  // namespace Vesk
