// Comparing paths as the system's file names are compared.
#pragma once

#include <filesystem>
#include <string>

namespace Vesk::platform {

/// Equal for two paths whose difference the file system ignores: on Windows the case of letters,
/// in every script; on POSIX nothing. It looks at the text only, so links and ".." must be resolved
/// before. Not for display.
std::string pathKey(const std::filesystem::path& path);

}  // namespace Vesk::platform
