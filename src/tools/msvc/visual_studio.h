// The compilers of Visual Studio and its build tools: which are installed, and where.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/msvc/architecture.h"

namespace Vesk {

/// An installation of Visual Studio, of any edition, or of the build tools alone.
struct VisualStudio {
    std::string directory;
    std::string name;  ///< for people: "Visual Studio Community 2022"
};

/// A version of the compilers in an installation, which can hold several.
struct ToolSet {
    std::string directory;  ///< ".../VC/Tools/MSVC/14.38.33130"
    std::string version;    ///< "14.38.33130"
    std::string studio;     ///< the name of the installation; may be empty
};

/// The JSON answer of vswhere, the installer's own search. Empty for anything else.
std::vector<VisualStudio> installationsIn(std::string_view json);

/// The installations in the usual places below a program directory.
std::vector<VisualStudio> installationsBelow(const std::string& programDirectory);

/// The versions in one installation, newest first. Remains of removed versions are left out.
std::vector<ToolSet> toolSetsIn(const VisualStudio& studio);

/// The tool set to which the directory, or a program directory in it, belongs. Its directory is
/// empty if there is none.
ToolSet toolSetAround(const std::string& directory);

/// The directory with the programs for the architecture, preferring those that run best on this
/// machine; empty if none has the compiler.
std::string binDirectory(const std::string& toolSet, const Architecture& architecture,
                         std::string_view compiler = "cl");

}  // namespace Vesk
