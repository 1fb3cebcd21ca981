// The walk that finds unit files.
#pragma once

#include <filesystem>
#include <vector>

namespace Vesk {

/// The unit files under `root`, in the order of a walk: those of a directory, then those of the
/// directories in it, by name. Directory links are followed last, unless they lead back to where
/// the walk is or has been. Throws std::filesystem::filesystem_error.
std::vector<std::filesystem::path> findUnitFiles(const std::filesystem::path& root);

}  // namespace Vesk
