#include "tools/llvm/llvm_toolchain.h"

#include "tools/gnu_style/gnu_style_variables.h"
#include "tools/support/c_family.h"

namespace Vesk {

const ToolTypeRegistration RegisterLLVMMatcher({
    .word = kLlvmToolchain.traits.toolType,
    .factory = matcherFactory<LLVMMatcher>(),
    .sources = kGnuStyleSources,
    .misnomers = kCFamilyMisnomers,
    .variables = kGnuStyleVariables,
    .detect = detectLLVM,
    .rank = 2,
    .compiler = kLlvmToolchain.of(GnuProgram::CCompiler).name,
});

}  // namespace Vesk
