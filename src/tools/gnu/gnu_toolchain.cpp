#include "tools/gnu/gnu_toolchain.h"

#include "tools/gnu_style/gnu_style_variables.h"
#include "tools/support/c_family.h"

namespace Vesk {

const ToolTypeRegistration RegisterGNUMatcher({
    .word = kGnuToolchain.traits.toolType,
    .factory = matcherFactory<GNUMatcher>(),
    .sources = kGnuStyleSources,
    .misnomers = kCFamilyMisnomers,
    .variables = kGnuStyleVariables,
    .detect = detectGNU,
    .rank = 1,
    .compiler = kGnuToolchain.of(GnuProgram::CCompiler).name,
});

}  // namespace Vesk
