// The Windows SDK and the Windows Driver Kit. Both are installed into one directory, "Windows
// Kits/10", in which each version has directories of its own name below Include, Lib and bin.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/msvc/architecture.h"

namespace Vesk {

/// One version of the kits; which of the two are there shows in their headers.
struct WindowsKit {
    std::string directory;  ///< "C:/Program Files (x86)/Windows Kits/10"
    std::string version;    ///< "10.0.22621.0"
    bool hasSdk = false;
    bool hasDriverKit = false;

    std::string include(std::string_view part) const;
    std::string library(std::string_view part, const Architecture& architecture) const;
};

/// Where kits are installed: what the registry of Windows names, then the usual place below each of
/// the directories for programs.
std::vector<std::string> kitDirectories(const std::vector<std::string>& programDirectories);

/// The versions in one of these directories, newest first. Remains of removed ones are left out.
std::vector<WindowsKit> kitsIn(const std::string& directory);

/// The versions of a driver framework ("kmdf", "umdf") in there, newest first.
std::vector<std::string> frameworkVersions(const std::string& kitDirectory,
                                           std::string_view framework);

/// What is asked of a kit.
struct KitWish {
    std::string directory;  ///< empty: any
    std::string version;    ///< as versionFits takes it; empty: the newest
    bool forDrivers = false;
};

/// The kit that fits best; one with an empty directory when there is none and nothing was asked
/// for. Throws VeskException, which names what is there, when a wish cannot be met.
WindowsKit chooseKit(const KitWish& wish, const std::vector<std::string>& programDirectories);

/// %ProgramFiles(x86)%, %ProgramFiles% and %ProgramW6432%, as far as they are set.
std::vector<std::string> programDirectories();

}  // namespace Vesk
