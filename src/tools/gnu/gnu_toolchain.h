// The GNU toolchain, "gnu-gcc": GCC and the GNU binutils.
#pragma once

#include "tools/gnu_style/gnu_style_builder.h"
#include "tools/tool_registry.h"

namespace Vesk {

inline constexpr GnuToolchain kGnuToolchain = {
    .traits = {"gnu-gcc", "GNUMatcher", kGnuStyleSources},
    .family = "GCC",
    .programs = {{"gcc", "gcc"},
                 {"g++", "g++"},
                 {"ar", "ar", "gcc-ar"},
                 {"ld", "ld"},
                 {"objcopy", "objcopy"}},
};

using GNUTool = GnuStyleTool<kGnuToolchain>;

using GNU_GCC = GnuStyleBuilder<kGnuToolchain, GnuProgram::CCompiler>;
using GNU_GPP = GnuStyleBuilder<kGnuToolchain, GnuProgram::CppCompiler>;
using GNU_AR = GnuStyleBuilder<kGnuToolchain, GnuProgram::Archiver>;
using GNU_LD = GnuStyleBuilder<kGnuToolchain, GnuProgram::Linker>;
using GNU_OBJCOPY = GnuStyleBuilder<kGnuToolchain, GnuProgram::ObjectCopier>;

/// Fits targets that name sources, objects or an object to copy.
using GNUMatcher = ToolchainMatcher<GnuStyleToolchain<kGnuToolchain>>;

extern const ToolTypeRegistration RegisterGNUMatcher;

/// The GNU compilers of this machine: those in PATH, then in their usual places on Windows.
std::vector<DetectedTool> detectGNU();

}  // namespace Vesk
