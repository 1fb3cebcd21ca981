#include "tools/gnu/gnu_builders.h"

#include <utility>

#include "tools/c_family/value_lists.h"

namespace Vesk {

namespace {

class GnuToolStyle : public GnuStyle {
  public:
    GnuToolStyle(TargetContext& target, const DeclaredPlace& declared, ToolchainPrograms& programs)
        : target_(target),
          declared_(declared),
          programs_(programs),
          place_(programs.place(declared, target)) {}

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

    std::string triple() const override { return declared_.triple; }

    std::vector<std::string> compilerOptions() const override {
        std::vector<std::string> options;
        if (hasEntries(target_, "SYSROOT")) {
            options.push_back("--sysroot=" + *target_.textOf("SYSROOT"));
        }
        return options;
    }

    std::vector<std::filesystem::path> searchDirectories() const override {
        return runFolders(place_);
    }

  private:
    const TargetContext& target_;
    const DeclaredPlace& declared_;
    ToolchainPrograms& programs_;
    const ToolchainPlace& place_;
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
