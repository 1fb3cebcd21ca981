// The Windows SDK and the Windows Driver Kit. Both are installed into the same directory, "Windows
// Kits/10", where each version has directories of its own name below Include, Lib and bin.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/msvc/architecture.h"

namespace Vesk {

/// One version of the kits. Its headers show which of the two are installed.
struct WindowsKit {
    std::string directory;  ///< "C:/Program Files (x86)/Windows Kits/10"
    std::string version;    ///< "10.0.22621.0"
    bool hasSdk = false;
    bool hasDriverKit = false;

    std::string include(std::string_view part) const;
    std::string library(std::string_view part, const Architecture& architecture) const;
};

/// Where kits are installed: what the Windows registry names, then the usual place below each of
/// the program directories.
std::vector<std::string> kitDirectories(const std::vector<std::string>& programDirectories);

/// The versions in one of these directories, newest first. Remains of removed versions are left
/// out.
std::vector<WindowsKit> kitsIn(const std::string& directory);

/// The versions of a driver framework ("kmdf", "umdf") there, newest first.
std::vector<std::string> frameworkVersions(const std::string& kitDirectory,
                                           std::string_view framework);

/// The requirements for a kit.
struct KitWish {
    std::string directory;  ///< empty: any
    std::string version;    ///< as versionFits takes it; empty: the newest
    bool forDrivers = false;
};

/// The kit that fits best; its directory is empty if there is none and nothing was asked for.
/// Throws VeskException, naming what is installed, if a requirement cannot be met.
WindowsKit chooseKit(const KitWish& wish, const std::vector<std::string>& programDirectories);

/// %ProgramFiles(x86)%, %ProgramFiles% and %ProgramW6432%, as far as they are set.
std::vector<std::string> programDirectories();

}  // namespace Vesk
