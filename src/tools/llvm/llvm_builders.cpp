#include "tools/llvm/llvm_builders.h"

#include <utility>

#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

class LlvmToolStyle : public PlacedGnuStyle {
  public:
    using PlacedGnuStyle::PlacedGnuStyle;

    // Some packages bring Clang without LLVM's utilities; those of the system do as well.
    std::string program(GnuProgram program) const override {
        switch (program) {
            case GnuProgram::CCompiler:
                return programs_.require(place_, {"clang"});
            case GnuProgram::CppCompiler:
                return programs_.require(place_, {"clang++"});
            case GnuProgram::Archiver:
                return programs_.require(place_, {"llvm-ar", "ar"});
            case GnuProgram::Linker:
                return programs_.require(place_, {"ld.lld", "ld"});
            case GnuProgram::ObjectCopier:
                break;
        }
        return programs_.require(place_, {"llvm-objcopy", "objcopy"});
    }

    std::string triple() const override {
        return hasEntries(target_, "TARGET_TRIPLE") ? *target_.textOf("TARGET_TRIPLE")
                                                    : declared_.triple;
    }

    std::vector<std::string> compilerOptions() const override {
        std::vector<std::string> options;
        if (hasEntries(target_, "TARGET_TRIPLE")) {
            options.push_back("--target=" + *target_.textOf("TARGET_TRIPLE"));
        }
        for (std::string& option : PlacedGnuStyle::compilerOptions()) {
            options.push_back(std::move(option));
        }
        return options;
    }

    // The system's linker reads neither LLVM's archives of bitcode nor its objects for LTO.
    std::vector<std::string> linkerOptions() const override {
        const bool chosen = hasEntries(target_, "LINKER");
        const bool hasLld = !chosen && !programs_.find(place_, {"ld.lld"}).empty();
        return hasLld ? std::vector<std::string>{"-fuse-ld=lld"} : std::vector<std::string>();
    }
};

}  // namespace

LLVMTool::LLVMTool(std::string name, AssignmentMap subjects, Language driver, DeclaredPlace place,
                   std::shared_ptr<ToolchainPrograms> programs)
    : CBuilder(std::move(name), std::move(subjects)),
      driver_(driver),
      place_(std::move(place)),
      programs_(std::move(programs)) {}

CBuilder::Created LLVMTool::doCreateRecipes(TargetContext& target,
                                            const BuildEnv& environment) const {
    const LlvmToolStyle style(target, place_, *programs_);
    GnuStyleBuild build(target, environment, style);
    build.make(driver_);
    return {std::move(build.recipes), std::move(build.outputs)};
}

CBuilder::Created LLVM_OBJCOPY::doCreateRecipes(TargetContext& target,
                                                const BuildEnv& environment) const {
    const LlvmToolStyle style(target, place_, *programs_);
    GnuStyleBuild build(target, environment, style);
    build.copyObject();
    return {std::move(build.recipes), std::move(build.outputs)};
}

}  // namespace Vesk
