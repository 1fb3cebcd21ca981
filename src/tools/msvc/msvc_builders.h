// The builders of the toolchain of Microsoft. Each builds whatever a target is made of; which one a
// target gets says what it mainly is.
#pragma once

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

/// Compiles C.
class MSVC_CL : public MSVCTool {
  public:
    MSVC_CL(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool("cl", std::move(place), std::move(programs)) {}
};

/// Compiles C++, and C beside it.
class MSVC_CPP : public MSVCTool {
  public:
    MSVC_CPP(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool("cl++", std::move(place), std::move(programs)) {}
};

/// Puts objects into a library.
class MSVC_LIB : public MSVCTool {
  public:
    MSVC_LIB(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool("lib", std::move(place), std::move(programs)) {}
};

/// Links objects and resources.
class MSVC_LINK : public MSVCTool {
  public:
    MSVC_LINK(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool("link", std::move(place), std::move(programs)) {}
};

/// Compiles messages.
class MSVC_MC : public MSVCTool {
  public:
    MSVC_MC(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool("mc", std::move(place), std::move(programs)) {}
};

/// Compiles resources.
class MSVC_RC : public MSVCTool {
  public:
    MSVC_RC(DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
        : MSVCTool("rc", std::move(place), std::move(programs)) {}
};

}  // namespace Vesk
