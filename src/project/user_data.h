// Where vesk keeps what belongs to its user.
#pragma once

#include <filesystem>

namespace Vesk {

/// The directory with this user's files, made when it is missing: "vesk" under %APPDATA%, or under
/// %USERPROFILE%\AppData\Local; where neither is set, on POSIX, under $XDG_CONFIG_HOME or
/// $HOME/.config. Throws std::runtime_error when none is set, std::filesystem::filesystem_error
/// when it cannot be made.
std::filesystem::path userDataDirectory();

/// The same, and nothing is made.
std::filesystem::path userDataPath();

}  // namespace Vesk
