// The builders of Microsoft's toolchain. Each can build any target; the one that a target gets
// tells what it mainly is.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "tools/discovery/toolchain_programs.h"
#include "tools/msvc/msvc_programs.h"
#include "tools/support/c_builder.h"

namespace Vesk {

class MSVCTool : public CBuilder {
  protected:
    MSVCTool(std::string name, DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs);

    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override;

  private:
    DeclaredPlace place_;
    std::shared_ptr<MsvcPrograms> programs_;
};

enum class MsvcStep { C, Cpp, Library, Link, Messages, Resources };

inline constexpr const char* kMsvcBuilderNames[] = {"cl", "cl++", "lib", "link", "mc", "rc"};

template <MsvcStep step>
class MsvcBuilder : public MSVCTool {
  public:
    MsvcBuilder(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool(kMsvcBuilderNames[static_cast<std::size_t>(step)], std::move(place),
                   std::move(programs)) {}
};

using MSVC_CL = MsvcBuilder<MsvcStep::C>;
using MSVC_CPP = MsvcBuilder<MsvcStep::Cpp>;  ///< and C as well
using MSVC_LIB = MsvcBuilder<MsvcStep::Library>;
using MSVC_LINK = MsvcBuilder<MsvcStep::Link>;
using MSVC_MC = MsvcBuilder<MsvcStep::Messages>;
using MSVC_RC = MsvcBuilder<MsvcStep::Resources>;

}  // namespace Vesk
