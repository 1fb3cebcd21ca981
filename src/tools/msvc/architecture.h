// The machines for which Microsoft's compilers make programs.
#pragma once

#include <string_view>

namespace Vesk {

/// The names of one machine.
struct Architecture {
    std::string_view directory;  ///< in paths of Visual Studio and the kits: "x64"
    std::string_view machine;    ///< for the linker's /MACHINE: "X64"
    std::string_view triple;     ///< "x86_64-pc-windows-msvc"
};

inline constexpr Architecture kArchitectures[] = {
    {"x64", "X64", "x86_64-pc-windows-msvc"},
    {"x86", "X86", "i686-pc-windows-msvc"},
    {"arm64", "ARM64", "aarch64-pc-windows-msvc"},
};

inline constexpr std::string_view kDefaultMsvcTriple = kArchitectures[0].triple;

/// The architecture of a triple, or that with any name of its machine. Throws VeskException for
/// others.
const Architecture& architectureOf(std::string_view triple);

}  // namespace Vesk
