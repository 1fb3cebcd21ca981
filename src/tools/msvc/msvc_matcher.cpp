#include "tools/msvc/msvc_matcher.h"

#include "base/exception.h"
#include "base/text.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/msvc/architecture.h"
#include "tools/msvc/msvc_builders.h"
#include "tools/msvc/msvc_programs.h"
#include "tools/msvc/msvc_variables.h"
#include "tools/support/c_family.h"
#include "tools/support/source_files.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

constexpr const char* kToolType = "msvc";
constexpr std::string_view kTarget = "toolchain_target";

const AssignmentMap& wantsTable() {
    static const AssignmentMap table =
        makeTable({{"toolchain_path"}, {"toolchain_version"}, {"toolchain_min_version"}});
    return table;
}

constexpr std::string_view kSources[] = {"C_FILES",   "CPP_FILES", "ASM_FILES",
                                         "OBJ_FILES", "RC_FILES",  "MC_FILES"};

/// A declaration that does not say which machine it is for.
AssignmentMap withTarget(const AssignmentMap& must, AssignmentMap others) {
    if (must.find(kTarget) == must.end() && others.find(kTarget) == others.end()) {
        Assignment target = textAssignment(std::string(kTarget), std::string(kDefaultMsvcTriple));
        others.emplace(target.name, target);
    }
    return others;
}

}  // namespace

const ToolTypeRegistration RegisterMSVCMatcher({
    .word = kToolType,
    .factory = matcherFactory<MSVCMatcher>(),
    .sources = kSources,
    .misnomers = kCFamilyMisnomers,
    .variables = kMsvcVariables,
    .detect = detectMSVC,
    .rank = 3,
});

MSVCMatcher::MSVCMatcher(const CiString& name, const AssignmentMap& must,
                         const AssignmentMap& others)
    : Matcher(name, kToolType, wantsTable(), {}, must, withTarget(must, others)),
      programs_(std::make_shared<MsvcPrograms>()) {
    if (!wants().at("toolchain_path").value) {
        throw VeskException("MSVCMatcher requires want variable 'toolchain_path'.");
    }
}

std::unique_ptr<Matcher> MSVCMatcher::clone() const {
    return std::make_unique<MSVCMatcher>(*this);
}

std::vector<CiString> MSVCMatcher::comparedNames() const {
    return withToolchainSettings(Matcher::comparedNames());
}

MatchResult MSVCMatcher::matchTool(const Context& target) const {
    return matchToolchain({kToolType, declaredSettings(), kSources}, target);
}

std::shared_ptr<Builder> MSVCMatcher::createBuilder(const Context& target) const {
    const DeclaredPlace place = declaredPlace(declaredSettings());
    if (hasEntries(target, "CPP_FILES")) {
        return std::make_shared<MSVC_CPP>(place, programs_);
    }
    if (hasSources(target)) {
        return std::make_shared<MSVC_CL>(place, programs_);
    }
    const std::string type = target.textOf("OUTPUT_TYPE").value_or("");
    if (equalsIgnoringCase(type, "static")) {
        return std::make_shared<MSVC_LIB>(place, programs_);
    }
    if (!hasEntries(target, "OBJ_FILES") && type.empty()) {
        if (hasEntries(target, "MC_FILES")) {
            return std::make_shared<MSVC_MC>(place, programs_);
        }
        if (hasEntries(target, "RC_FILES")) {
            return std::make_shared<MSVC_RC>(place, programs_);
        }
    }
    return std::make_shared<MSVC_LINK>(place, programs_);
}

}  // namespace Vesk
