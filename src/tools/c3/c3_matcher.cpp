#include "tools/c3/c3_matcher.h"

#include <utility>

#include "tools/c3/c3_builder.h"
#include "tools/c3/c3_variables.h"

namespace Vesk {

namespace {

constexpr std::string_view kSources[] = {"C3_FILES"};
constexpr Misnomer kMisnomers[] = {
    {"SOURCES", "C3_FILES"},   {"SRCS", "C3_FILES"},  {"C3FLAGS", "C3_FLAGS"},
    {"LDFLAGS", "LINK_FLAGS"}, {"LIBRARIES", "LIBS"},
};

/// Includes those of C: a target of both languages has to come here, where its mistake is reported.
constexpr std::string_view kScored[] = {"C3_FILES",  "C3_FLAGS",  "C_FILES",
                                        "CPP_FILES", "ASM_FILES", "OBJ_FILES"};

}  // namespace

constinit const ToolchainTraits C3Toolchain::kTraits = {"c3c", "C3Matcher", kScored, true,
                                                        "C3_FILES"};

const ToolTypeRegistration RegisterC3Matcher({
    .word = C3Toolchain::kTraits.toolType,
    .factory = matcherFactory<C3Matcher>(),
    .sources = kSources,
    .misnomers = kMisnomers,
    .variables = kC3Variables,
    .detect = detectC3,
    .rank = 4,
    .compiler = "c3c",
});

std::shared_ptr<Builder> C3Toolchain::builder(const Context&, DeclaredPlace place) const {
    return std::make_shared<C3Builder>(std::move(place), programs);
}

}  // namespace Vesk
