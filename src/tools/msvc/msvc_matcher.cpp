#include "tools/msvc/msvc_matcher.h"

#include "base/text.h"
#include "tools/msvc/architecture.h"
#include "tools/msvc/msvc_builders.h"
#include "tools/msvc/msvc_variables.h"
#include "tools/support/c_family.h"
#include "tools/support/source_files.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

constexpr std::string_view kTarget = "toolchain_target";

constexpr std::string_view kSources[] = {"C_FILES",   "CPP_FILES", "ASM_FILES",
                                         "OBJ_FILES", "RC_FILES",  "MC_FILES"};

}  // namespace

constinit const ToolchainTraits MsvcToolchain::kTraits = {"msvc", "MSVCMatcher", kSources};

const ToolTypeRegistration RegisterMSVCMatcher({
    .word = MsvcToolchain::kTraits.toolType,
    .factory = matcherFactory<MSVCMatcher>(),
    .sources = kSources,
    .misnomers = kCFamilyMisnomers,
    .variables = kMsvcVariables,
    .detect = detectMSVC,
    .rank = 3,
});

AssignmentMap MsvcToolchain::completed(const AssignmentMap& must, AssignmentMap others) {
    if (must.find(kTarget) == must.end() && others.find(kTarget) == others.end()) {
        Assignment target = textAssignment(std::string(kTarget), std::string(kDefaultMsvcTriple));
        others.emplace(target.name, target);
    }
    return others;
}

std::shared_ptr<Builder> MsvcToolchain::builder(const Context& target, DeclaredPlace place) const {
    if (hasEntries(target, "CPP_FILES")) {
        return std::make_shared<MSVC_CPP>(std::move(place), programs);
    }
    if (hasSources(target)) {
        return std::make_shared<MSVC_CL>(std::move(place), programs);
    }
    const std::string type = target.textOf("OUTPUT_TYPE").value_or("");
    if (equalsIgnoringCase(type, "static")) {
        return std::make_shared<MSVC_LIB>(std::move(place), programs);
    }
    if (!hasEntries(target, "OBJ_FILES") && type.empty()) {
        if (hasEntries(target, "MC_FILES")) {
            return std::make_shared<MSVC_MC>(std::move(place), programs);
        }
        if (hasEntries(target, "RC_FILES")) {
            return std::make_shared<MSVC_RC>(std::move(place), programs);
        }
    }
    return std::make_shared<MSVC_LINK>(std::move(place), programs);
}

}  // namespace Vesk
