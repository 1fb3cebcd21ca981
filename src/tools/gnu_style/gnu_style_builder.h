// The builders and the matcher of a toolchain whose compilers take GCC's options.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "tools/discovery/toolchain_matcher.h"
#include "tools/gnu_style/gnu_style_choice.h"
#include "tools/gnu_style/gnu_toolchain.h"
#include "tools/support/c_builder.h"

namespace Vesk {

/// What each of the builders makes.
std::pair<std::vector<Recipe>, std::vector<Assignment>> gnuStyleRecipes(
    GnuProgram program, const GnuStyle& style, const TargetContext& target,
    const BuildEnv& environment);

/// The variables that it consumes.
const AssignmentMap& subjectsOf(GnuProgram program);

template <const GnuToolchain& toolchain>
class GnuStyleTool : public CBuilder {
  protected:
    GnuStyleTool(GnuProgram program, DeclaredPlace place,
                 std::shared_ptr<ToolchainPrograms> programs)
        : CBuilder(toolchain.of(program).builder, subjectsOf(program)),
          program_(program),
          place_(std::move(place)),
          programs_(std::move(programs)) {}

    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override {
        const GnuStyle style(toolchain, target, place_, *programs_);
        return gnuStyleRecipes(program_, style, target, environment);
    }

  private:
    GnuProgram program_;
    DeclaredPlace place_;
    std::shared_ptr<ToolchainPrograms> programs_;
};

/// Builds targets that mainly need one of the programs.
template <const GnuToolchain& toolchain, GnuProgram program>
class GnuStyleBuilder : public GnuStyleTool<toolchain> {
  public:
    GnuStyleBuilder(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
        : GnuStyleTool<toolchain>(program, std::move(place), std::move(programs)) {}
};

/// The Toolchain of a ToolchainMatcher.
template <const GnuToolchain& toolchain>
struct GnuStyleToolchain {
    static constexpr const ToolchainTraits& kTraits = toolchain.traits;

    std::shared_ptr<Builder> builder(const Context& target, DeclaredPlace place) const {
        switch (gnuStyleStep(target)) {
            case GnuProgram::ObjectCopier:
                return make<GnuProgram::ObjectCopier>(std::move(place));
            case GnuProgram::Linker:
                return make<GnuProgram::Linker>(std::move(place));
            case GnuProgram::Archiver:
                return make<GnuProgram::Archiver>(std::move(place));
            case GnuProgram::CppCompiler:
                return make<GnuProgram::CppCompiler>(std::move(place));
            case GnuProgram::CCompiler:
                break;
        }
        return make<GnuProgram::CCompiler>(std::move(place));
    }

  private:
    template <GnuProgram program>
    std::shared_ptr<Builder> make(DeclaredPlace place) const {
        return std::make_shared<GnuStyleBuilder<toolchain, program>>(std::move(place), programs_);
    }

    std::shared_ptr<ToolchainPrograms> programs_ =
        std::make_shared<ToolchainPrograms>(std::string(toolchain.of(GnuProgram::CCompiler).name));
};

}  // namespace Vesk
