#include "tools/llvm/llvm_matcher.h"

#include "base/exception.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/gnu_style/gnu_style_choice.h"
#include "tools/gnu_style/gnu_style_variables.h"
#include "tools/llvm/llvm_builders.h"
#include "tools/support/c_family.h"

namespace Vesk {

namespace {

constexpr const char* kToolType = "llvm-clang";

const AssignmentMap& wantsTable() {
    static const AssignmentMap table =
        makeTable({{"toolchain_path"}, {"toolchain_version"}, {"toolchain_min_version"}});
    return table;
}

}  // namespace

const ToolTypeRegistration RegisterLLVMMatcher({
    .word = kToolType,
    .factory = matcherFactory<LLVMMatcher>(),
    .sources = kGnuStyleSources,
    .misnomers = kCFamilyMisnomers,
    .variables = kGnuStyleVariables,
    .detect = detectLLVM,
    .rank = 2,
});

LLVMMatcher::LLVMMatcher(const CiString& name, const AssignmentMap& must,
                         const AssignmentMap& others)
    : Matcher(name, kToolType, wantsTable(), {}, must, others),
      programs_(std::make_shared<ToolchainPrograms>("clang")) {
    if (!wants().at("toolchain_path").value) {
        throw VeskException("LLVMMatcher requires want variable 'toolchain_path'.");
    }
}

std::unique_ptr<Matcher> LLVMMatcher::clone() const {
    return std::make_unique<LLVMMatcher>(*this);
}

std::vector<CiString> LLVMMatcher::comparedNames() const {
    return withToolchainSettings(Matcher::comparedNames());
}

MatchResult LLVMMatcher::matchTool(const Context& target) const {
    return matchToolchain({kToolType, declaredSettings(), kGnuStyleSources, true}, target);
}

std::shared_ptr<Builder> LLVMMatcher::createBuilder(const Context& target) const {
    const DeclaredPlace place = declaredPlace(declaredSettings());
    switch (gnuStyleStep(target)) {
        case GnuProgram::ObjectCopier:
            return std::make_shared<LLVM_OBJCOPY>(place, programs_);
        case GnuProgram::Linker:
            return std::make_shared<LLVM_LD>(place, programs_);
        case GnuProgram::Archiver:
            return std::make_shared<LLVM_AR>(place, programs_);
        case GnuProgram::CppCompiler:
            return std::make_shared<LLVM_CLANGPP>(place, programs_);
        case GnuProgram::CCompiler:
            break;
    }
    return std::make_shared<LLVM_CLANG>(place, programs_);
}

}  // namespace Vesk
