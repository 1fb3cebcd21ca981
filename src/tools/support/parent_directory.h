// Splitting paths that users wrote.
#pragma once

#include <filesystem>

namespace Vesk {

/// The directory that holds `path`, as text gives it; slashes and backslashes at the end do not
/// count. Empty when the path has no directory part.
std::filesystem::path parentDirectory(const std::filesystem::path& path);

}  // namespace Vesk
