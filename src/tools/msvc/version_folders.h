// Folders that are named by version numbers, as Visual Studio and the kits keep theirs.
#pragma once

#include <string>
#include <vector>

namespace Vesk {

/// The names of the subfolders, in the order of their letters. Empty for a folder that cannot be
/// read.
std::vector<std::string> subfolders(const std::string& folder);

/// Those that begin with a digit, highest version first.
std::vector<std::string> versionFolders(const std::string& folder);

bool isFolder(const std::string& path);

}  // namespace Vesk
