// The builders of the LLVM toolchain. What a target is built of and how it is linked is shared by
// all GCC-like compilers (tools/gnu_style/gnu_style.h); here stands what is LLVM's own.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tools/discovery/toolchain_programs.h"
#include "tools/gnu_style/gnu_style.h"
#include "tools/gnu_style/gnu_style_variables.h"
#include "tools/support/c_builder.h"

namespace Vesk {

class LLVMTool : public CBuilder {
  protected:
    LLVMTool(std::string name, AssignmentMap subjects, Language driver, DeclaredPlace place,
             std::shared_ptr<ToolchainPrograms> programs);

    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override;

    Language driver_;
    DeclaredPlace place_;
    std::shared_ptr<ToolchainPrograms> programs_;
};

/// Compiles C, and links as C.
class LLVM_CLANG : public LLVMTool {
  public:
    LLVM_CLANG(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : LLVMTool("clang", gnuStyleSubjects(), Language::C, std::move(place),
                   std::move(programs)) {}
};

/// Compiles C and C++, and links as C++.
class LLVM_CLANGPP : public LLVMTool {
  public:
    LLVM_CLANGPP(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : LLVMTool("clang++", gnuStyleSubjects(), Language::Cpp, std::move(place),
                   std::move(programs)) {}
};

/// Puts objects into an archive.
class LLVM_AR : public LLVMTool {
  public:
    LLVM_AR(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : LLVMTool("llvm-ar", gnuStyleSubjects(), Language::C, std::move(place),
                   std::move(programs)) {}
};

/// Links objects without a compiler's additions.
class LLVM_LD : public LLVMTool {
  public:
    LLVM_LD(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : LLVMTool("lld", gnuStyleSubjects(), Language::C, std::move(place), std::move(programs)) {}
};

/// Copies an object and changes it on the way.
class LLVM_OBJCOPY : public LLVMTool {
  public:
    LLVM_OBJCOPY(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : LLVMTool("llvm-objcopy", objectCopySubjects(), Language::C, std::move(place),
                   std::move(programs)) {}

  protected:
    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override;
};

}  // namespace Vesk
