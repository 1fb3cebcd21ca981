// Looks for compilers that take GCC's options.
#pragma once

#include "tools/discovery/compiler_search.h"
#include "tools/gnu_style/gnu_toolchain.h"

namespace Vesk {

/// The toolchains whose compilers lie in the directories, with warnings about what they lack.
/// `defaultForEachTriple` and `ask` are those of CompilerFamily.
std::vector<DetectedTool> detectGnuStyle(const GnuToolchain& toolchain,
                                         const std::vector<std::string>& directories,
                                         bool defaultForEachTriple,
                                         CompilerAnswer (*ask)(const FoundCompiler& compiler));

}  // namespace Vesk
