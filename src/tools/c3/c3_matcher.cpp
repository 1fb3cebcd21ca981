#include "tools/c3/c3_matcher.h"

#include "base/exception.h"
#include "tools/c3/c3_builder.h"
#include "tools/c3/c3_variables.h"
#include "tools/discovery/toolchain_match.h"

namespace Vesk {

namespace {

constexpr const char* kToolType = "c3c";

const AssignmentMap& wantsTable() {
    static const AssignmentMap table =
        makeTable({{"toolchain_path"}, {"toolchain_version"}, {"toolchain_min_version"}});
    return table;
}

const AssignmentMap& needsTable() {
    static const AssignmentMap table = makeTable({{"C3_FILES"}});
    return table;
}

constexpr std::string_view kSources[] = {"C3_FILES"};
constexpr Misnomer kMisnomers[] = {
    {"SOURCES", "C3_FILES"},   {"SRCS", "C3_FILES"},  {"C3FLAGS", "C3_FLAGS"},
    {"LDFLAGS", "LINK_FLAGS"}, {"LIBRARIES", "LIBS"},
};

/// Those of C as well: a target of both languages has to come here, where its mistake is reported.
constexpr std::string_view kScored[] = {"C3_FILES",  "C3_FLAGS",  "C_FILES",
                                        "CPP_FILES", "ASM_FILES", "OBJ_FILES"};

}  // namespace

const ToolTypeRegistration RegisterC3Matcher({
    .word = kToolType,
    .factory = matcherFactory<C3Matcher>(),
    .sources = kSources,
    .misnomers = kMisnomers,
    .variables = kC3Variables,
    .detect = detectC3,
    .rank = 4,
});

C3Matcher::C3Matcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others)
    : Matcher(name, kToolType, wantsTable(), needsTable(), must, others),
      programs_(std::make_shared<ToolchainPrograms>("c3c")) {
    if (!wants().at("toolchain_path").value) {
        throw VeskException("C3Matcher requires want variable 'toolchain_path'.");
    }
}

std::unique_ptr<Matcher> C3Matcher::clone() const {
    return std::make_unique<C3Matcher>(*this);
}

std::vector<CiString> C3Matcher::comparedNames() const {
    return withToolchainSettings(Matcher::comparedNames());
}

MatchResult C3Matcher::matchTool(const Context& target) const {
    return matchToolchain({kToolType, declaredSettings(), kScored, true}, target);
}

std::shared_ptr<Builder> C3Matcher::createBuilder(const Context&) const {
    return std::make_shared<C3Builder>(declaredPlace(declaredSettings()), programs_);
}

}  // namespace Vesk
