#include "tools/gnu/gnu_builders.h"

#include <utility>

namespace Vesk {

namespace {

class GnuToolStyle : public PlacedGnuStyle {
  public:
    using PlacedGnuStyle::PlacedGnuStyle;

    std::string program(GnuProgram program) const override {
        switch (program) {
            case GnuProgram::CCompiler:
                return programs_.require(place_, {"gcc"});
            case GnuProgram::CppCompiler:
                return programs_.require(place_, {"g++"});
            case GnuProgram::Archiver:
                return programs_.require(place_, {"ar", "gcc-ar"});
            case GnuProgram::Linker:
                return programs_.require(place_, {"ld"});
            case GnuProgram::ObjectCopier:
                break;
        }
        return programs_.require(place_, {"objcopy"});
    }
};

}  // namespace

GNUTool::GNUTool(std::string name, AssignmentMap subjects, Language driver, DeclaredPlace place,
                 std::shared_ptr<ToolchainPrograms> programs)
    : CBuilder(std::move(name), std::move(subjects)),
      driver_(driver),
      place_(std::move(place)),
      programs_(std::move(programs)) {}

CBuilder::Created GNUTool::doCreateRecipes(TargetContext& target,
                                           const BuildEnv& environment) const {
    const GnuToolStyle style(target, place_, *programs_);
    GnuStyleBuild build(target, environment, style);
    build.make(driver_);
    return {std::move(build.recipes), std::move(build.outputs)};
}

CBuilder::Created GNU_OBJCOPY::doCreateRecipes(TargetContext& target,
                                               const BuildEnv& environment) const {
    const GnuToolStyle style(target, place_, *programs_);
    GnuStyleBuild build(target, environment, style);
    build.copyObject();
    return {std::move(build.recipes), std::move(build.outputs)};
}

}  // namespace Vesk
