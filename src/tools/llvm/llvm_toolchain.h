// The LLVM toolchain, "llvm-clang": Clang, LLD and LLVM's binary utilities.
#pragma once

#include "tools/gnu_style/gnu_style_builder.h"
#include "tools/tool_registry.h"

namespace Vesk {

inline constexpr GnuToolchain kLlvmToolchain = {
    .traits = {"llvm-clang", "LLVMMatcher", kGnuStyleSources, true},
    .family = "Clang",
    // Some packages bring Clang without LLVM's utilities; the system's work as well.
    .programs = {{"clang", "clang"},
                 {"clang++", "clang++"},
                 {"llvm-ar", "llvm-ar", "ar"},
                 {"lld", "ld.lld", "ld"},
                 {"llvm-objcopy", "llvm-objcopy", "objcopy"}},
    // The system's linker reads neither LLVM's bitcode archives nor its objects for LTO.
    .linker = "lld",
};

using LLVMTool = GnuStyleTool<kLlvmToolchain>;

using LLVM_CLANG = GnuStyleBuilder<kLlvmToolchain, GnuProgram::CCompiler>;
using LLVM_CLANGPP = GnuStyleBuilder<kLlvmToolchain, GnuProgram::CppCompiler>;
using LLVM_AR = GnuStyleBuilder<kLlvmToolchain, GnuProgram::Archiver>;
using LLVM_LD = GnuStyleBuilder<kLlvmToolchain, GnuProgram::Linker>;
using LLVM_OBJCOPY = GnuStyleBuilder<kLlvmToolchain, GnuProgram::ObjectCopier>;

/// Fits targets that name sources, objects or an object to copy, for any TARGET_TRIPLE.
using LLVMMatcher = ToolchainMatcher<GnuStyleToolchain<kLlvmToolchain>>;

extern const ToolTypeRegistration RegisterLLVMMatcher;

/// The Clang compilers of this machine: those in PATH, then in the usual places of LLVM's packages.
std::vector<DetectedTool> detectLLVM();

}  // namespace Vesk
