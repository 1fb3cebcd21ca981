#include "tools/gnu_style/gnu_style_builder.h"

#include "tools/gnu_style/gnu_style.h"
#include "tools/gnu_style/gnu_style_variables.h"

namespace Vesk {

std::pair<std::vector<Recipe>, std::vector<Assignment>> gnuStyleRecipes(
    GnuProgram program, const GnuStyle& style, const TargetContext& target,
    const BuildEnv& environment) {
    GnuStyleBuild build(target, environment, style);
    if (program == GnuProgram::ObjectCopier) {
        build.copyObject();
    } else {
        build.make(program == GnuProgram::CppCompiler ? Language::Cpp : Language::C);
    }
    return {std::move(build.recipes), std::move(build.outputs)};
}

const AssignmentMap& subjectsOf(GnuProgram program) {
    return program == GnuProgram::ObjectCopier ? objectCopySubjects() : gnuStyleSubjects();
}

}  // namespace Vesk
