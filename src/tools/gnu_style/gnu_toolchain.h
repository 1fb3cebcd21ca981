// A toolchain whose compilers take GCC's options: its programs, and what it says of one target.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/toolchain_programs.h"
#include "types/model/target.h"

namespace Vesk {

/// The steps that need a program of their own.
enum class GnuProgram { CCompiler, CppCompiler, Archiver, Linker, ObjectCopier };

/// The program of a step, and the one that is taken where there is none of this name.
struct ProgramNames {
    const char* builder;  ///< the name of the builder
    std::string_view name;
    std::string_view otherwise = name;
};

/// What differs between toolchains of this kind. One for any target is told TARGET_TRIPLE.
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

/// A toolchain in its place, for one target. All that is referred to outlives it.
class GnuStyle {
  public:
    GnuStyle(const GnuToolchain& toolchain, TargetContext& target, const DeclaredPlace& declared,
             ToolchainPrograms& programs);

    /// Its path. Throws VeskException when it is not there.
    std::string program(GnuProgram program) const;

    /// Says what the products are called.
    std::string triple() const;

    /// Added to every call of a compiler, also when it links.
    std::vector<std::string> compilerOptions() const;

    /// Added when a compiler links.
    std::vector<std::string> linkerOptions() const;

    /// How PACKAGES of the target are compiled and linked with. Throws VeskException for a package,
    /// or a pkg-config, that is not there.
    PackageFlags packages() const;

    /// Where the programs find what they need to run; empty where they know by themselves.
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
