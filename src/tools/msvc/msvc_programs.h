// The programs and directories that a declaration of the toolchain stands for.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/remembered.h"
#include "tools/discovery/pkg_config.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/msvc/windows_kits.h"

namespace Vesk {

enum class MsvcProgram {
    Compiler,
    Assembler,
    Librarian,
    Linker,
    ResourceCompiler,
    MessageCompiler,
    CatalogueMaker,
    Signer,
};

/// Where the parts of a toolchain are, for targets with the same requirements.
struct MsvcDirectories {
    const Architecture* architecture = nullptr;
    std::string compiler;  ///< its name: "cl", "clang-cl"
    bool clang = false;
    std::string bin;      ///< of the compiler
    std::string toolSet;  ///< holds the compiler's headers and libraries; may be empty
    std::string version;  ///< of the tool set; empty if not known
    WindowsKit kit;       ///< its directory is empty if there is none
    std::vector<std::string> kitBins;
};

/// Finds programs and remembers for the whole run where they are. Shared by the copies of a
/// matcher; used on the driver's thread only.
class MsvcPrograms {
  public:
    /// Uses settings of the target or the declaration: toolchain_path (a tool set, a program
    /// directory, or an installation of Visual Studio, whose newest tool set is used),
    /// toolchain_compiler, winsdk_path, winsdk_version, wdk_version. Throws VeskException for
    /// anything missing.
    const MsvcDirectories& directories(const DeclaredPlace& declared, Context& target,
                                       bool forDrivers);

    /// Throws VeskException if the program is missing. If `name` is given, it is looked for
    /// instead.
    std::string require(const MsvcDirectories& directories, MsvcProgram program,
                        const std::string& name);

    /// Throws VeskException for a missing package or pkg-config. `triple`: of the product.
    const PackageFlags& packages(const MsvcDirectories& directories, const std::string& triple,
                                 const std::vector<std::string>& packages, LinkKind kind);

  private:
    platform::Remembered<MsvcDirectories> directories_;
    platform::Remembered<std::string> programs_;
    ToolchainPrograms others_{"cl"};  ///< pkg-config
};

}  // namespace Vesk
