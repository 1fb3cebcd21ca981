#include "tools/msvc/msvc_builders.h"

#include "tools/msvc/msvc_build.h"
#include "tools/msvc/msvc_variables.h"

namespace Vesk {

MSVCTool::MSVCTool(std::string name, DeclaredPlace place, std::shared_ptr<MsvcPrograms> programs)
    : CBuilder(std::move(name), msvcSubjects()),
      place_(std::move(place)),
      programs_(std::move(programs)) {}

CBuilder::Created MSVCTool::doCreateRecipes(TargetContext& target,
                                            const BuildEnv& environment) const {
    MsvcBuild build(target, environment, place_, *programs_);
    build.make();
    return {std::move(build.recipes), std::move(build.outputs)};
}

}  // namespace Vesk
