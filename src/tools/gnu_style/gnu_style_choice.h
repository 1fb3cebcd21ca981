// Which program of a GCC-like toolchain a target needs.
#pragma once

#include <string_view>

#include "tools/gnu_style/gnu_toolchain.h"

namespace Vesk {

/// Variables of which a target must have one.
inline constexpr std::string_view kGnuStyleSources[] = {"C_FILES", "CPP_FILES", "ASM_FILES",
                                                        "OBJ_FILES", "OBJCOPY_INPUT"};

/// The program that makes the target's product. Objects alone are linked by the C++ compiler, since
/// nothing tells their language.
GnuProgram gnuStyleStep(const Context& target);

}  // namespace Vesk
