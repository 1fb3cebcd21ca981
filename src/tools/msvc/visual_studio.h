// The compilers of Visual Studio and of its build tools: which are installed, and where.
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

/// A version of the compilers in one of them; an installation can hold several.
struct ToolSet {
    std::string directory;  ///< ".../VC/Tools/MSVC/14.38.33130"
    std::string version;    ///< "14.38.33130"
    std::string studio;     ///< the name of the installation; may be empty
};

/// What vswhere, the installer's own search, answers in JSON. Empty for anything else.
std::vector<VisualStudio> installationsIn(std::string_view json);

/// The installations in the usual places below a directory for programs.
std::vector<VisualStudio> installationsBelow(const std::string& programDirectory);

/// The versions in one installation, newest first, without those that are removed but for remains.
std::vector<ToolSet> toolSetsIn(const VisualStudio& studio);

/// The tool set to which the directory itself or a directory of programs in it belongs; one with an
/// empty directory when it belongs to none.
ToolSet toolSetAround(const std::string& directory);

/// The directory of the programs that make programs for the architecture, those that run best on
/// this machine first; empty when the compiler is in none.
std::string binDirectory(const std::string& toolSet, const Architecture& architecture,
                         std::string_view compiler = "cl");

}  // namespace Vesk
