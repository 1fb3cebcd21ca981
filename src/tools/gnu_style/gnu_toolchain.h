// A toolchain whose compilers take GCC's options: its programs, and its settings for one target.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/toolchain_programs.h"
#include "types/model/target.h"

namespace Vesk {

/// The steps that need their own program.
enum class GnuProgram { CCompiler, CppCompiler, Archiver, Linker, ObjectCopier };

/// The program of a step, and the one used if there is none of this name.
struct ProgramNames {
    const char* builder;  ///< the name of the builder
    std::string_view name;
    std::string_view otherwise = name;
};

/// How toolchains of this kind differ. One for any target is given TARGET_TRIPLE.
struct GnuToolchain {
    ToolchainTraits traits;
    const char* family;        ///< "GCC"
    ProgramNames programs[5];  ///< in the order of GnuProgram
    const char* linker =
        nullptr;  ///< what links when it is there and LINKER does not say otherwise

    const ProgramNames& of(GnuProgram program) const {
        return programs[static_cast<std::size_t>(program)];
    }
};

/// A toolchain in its place, for one target. Everything passed by reference must outlive it.
class GnuStyle {
  public:
    GnuStyle(const GnuToolchain& toolchain, TargetContext& target, const DeclaredPlace& declared,
             ToolchainPrograms& programs);

    /// The path of a program. Throws VeskException if it is missing.
    std::string program(GnuProgram program) const;

    /// The triple that decides how products are named.
    std::string triple() const;

    /// Added to every call of a compiler, including links.
    std::vector<std::string> compilerOptions() const;

    /// Added when a compiler links.
    std::vector<std::string> linkerOptions() const;

    /// How to compile and link with the target's PACKAGES. Throws VeskException for a missing
    /// package or pkg-config.
    PackageFlags packages() const;

    /// Where the programs find what they need to run; empty if they need no help.
    std::vector<std::filesystem::path> searchDirectories() const;

  private:
    bool isToldTarget() const;

    const GnuToolchain& toolchain_;
    const TargetContext& target_;
    const DeclaredPlace& declared_;
    ToolchainPrograms& programs_;
    const ToolchainPlace& place_;
};

}  // namespace Vesk
