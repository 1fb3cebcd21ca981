// Splits paths that users wrote.
#pragma once

#include <filesystem>

namespace Vesk {

/// The directory part of `path` as a text. Slashes and backslashes at the end do not count. Empty
/// if the path has no directory part.
std::filesystem::path parentDirectory(const std::filesystem::path& path);

}  // namespace Vesk
