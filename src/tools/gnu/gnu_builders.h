// The builders of the GNU toolchain. What a target is built of and how it is linked is shared by
// all GCC-like compilers (tools/gnu_style/gnu_style.h); here stands what is GNU's own.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tools/discovery/toolchain_programs.h"
#include "tools/gnu_style/gnu_style.h"
#include "tools/gnu_style/gnu_style_variables.h"
#include "tools/support/c_builder.h"

namespace Vesk {

class GNUTool : public CBuilder {
  protected:
    GNUTool(std::string name, AssignmentMap subjects, Language driver, DeclaredPlace place,
            std::shared_ptr<ToolchainPrograms> programs);

    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override;

    Language driver_;
    DeclaredPlace place_;
    std::shared_ptr<ToolchainPrograms> programs_;
};

/// Compiles C, and links as C.
class GNU_GCC : public GNUTool {
  public:
    GNU_GCC(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : GNUTool("gcc", gnuStyleSubjects(), Language::C, std::move(place), std::move(programs)) {}
};

/// Compiles C and C++, and links as C++.
class GNU_GPP : public GNUTool {
  public:
    GNU_GPP(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : GNUTool("g++", gnuStyleSubjects(), Language::Cpp, std::move(place), std::move(programs)) {
    }
};

/// Puts objects into an archive.
class GNU_AR : public GNUTool {
  public:
    GNU_AR(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : GNUTool("ar", gnuStyleSubjects(), Language::C, std::move(place), std::move(programs)) {}
};

/// Links objects without a compiler's additions.
class GNU_LD : public GNUTool {
  public:
    GNU_LD(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : GNUTool("ld", gnuStyleSubjects(), Language::C, std::move(place), std::move(programs)) {}
};

/// Copies an object and changes it on the way.
class GNU_OBJCOPY : public GNUTool {
  public:
    GNU_OBJCOPY(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : GNUTool("objcopy", objectCopySubjects(), Language::C, std::move(place),
                  std::move(programs)) {}

  protected:
    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override;
};

}  // namespace Vesk
