#include "tools/gnu/gnu_matcher.h"

#include "base/exception.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/gnu/gnu_builders.h"
#include "tools/gnu_style/gnu_style_choice.h"
#include "tools/gnu_style/gnu_style_variables.h"
#include "tools/support/c_family.h"

namespace Vesk {

namespace {

constexpr const char* kToolType = "gnu-gcc";

const AssignmentMap& wantsTable() {
    static const AssignmentMap table =
        makeTable({{"toolchain_path"}, {"toolchain_version"}, {"toolchain_min_version"}});
    return table;
}

}  // namespace

const ToolTypeRegistration RegisterGNUMatcher({
    .word = kToolType,
    .factory = matcherFactory<GNUMatcher>(),
    .sources = kGnuStyleSources,
    .misnomers = kCFamilyMisnomers,
    .variables = kGnuStyleVariables,
    .detect = detectGNU,
    .rank = 1,
});

GNUMatcher::GNUMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others)
    : Matcher(name, kToolType, wantsTable(), {}, must, others),
      programs_(std::make_shared<ToolchainPrograms>("gcc")) {
    if (!wants().at("toolchain_path").value) {
        throw VeskException("GNUMatcher requires want variable 'toolchain_path'.");
    }
}

std::unique_ptr<Matcher> GNUMatcher::clone() const {
    return std::make_unique<GNUMatcher>(*this);
}

std::vector<CiString> GNUMatcher::comparedNames() const {
    return withToolchainSettings(Matcher::comparedNames());
}

MatchResult GNUMatcher::matchTool(const Context& target) const {
    return matchToolchain({kToolType, declaredSettings(), kGnuStyleSources}, target);
}

std::shared_ptr<Builder> GNUMatcher::createBuilder(const Context& target) const {
    const DeclaredPlace place = declaredPlace(declaredSettings());
    switch (gnuStyleStep(target)) {
        case GnuProgram::ObjectCopier:
            return std::make_shared<GNU_OBJCOPY>(place, programs_);
        case GnuProgram::Linker:
            return std::make_shared<GNU_LD>(place, programs_);
        case GnuProgram::Archiver:
            return std::make_shared<GNU_AR>(place, programs_);
        case GnuProgram::CppCompiler:
            return std::make_shared<GNU_GPP>(place, programs_);
        case GnuProgram::CCompiler:
            break;
    }
    return std::make_shared<GNU_GCC>(place, programs_);
}

}  // namespace Vesk
