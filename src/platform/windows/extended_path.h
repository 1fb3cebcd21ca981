// Paths beyond the classic length limit.
#pragma once

#include <filesystem>
#include <string>

namespace Vesk::platform {

/// The form of the path that the system takes at any length: a long path absolute, with backslashes
/// and behind the prefix that switches the limit off, a short one as it is.
std::wstring extendedPath(const std::filesystem::path& path);

}  // namespace Vesk::platform
