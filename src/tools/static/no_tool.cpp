#include "tools/static/no_tool.h"

namespace Vesk {

namespace {

constexpr std::string_view kVariable = "NO_TOOL";
constexpr std::string_view kNoToolSources[] = {kVariable};
constexpr Misnomer kNoToolMisnomers[] = {{"PHONY", kVariable}};
constexpr Variable kNoToolVariables[] = {
    {kVariable, "no value", "", "nothing is run: the target groups its dependencies"},
};
constexpr VariableGroup kGroup = {"No tool", VariableRole::Input, kNoToolVariables};
constexpr const VariableGroup* kNoToolGroups[] = {&kGroup};

const AssignmentMap& noToolNeeds() {
    static const AssignmentMap table = makeTable({{kVariable}});
    return table;
}

}  // namespace

const ToolTypeRegistration RegisterNoToolMatcher({
    .word = "no_tool",
    .factory = matcherFactory<NoToolMatcher>(),
    .sources = kNoToolSources,
    .misnomers = kNoToolMisnomers,
    .variables = kNoToolGroups,
});

NoToolMatcher::NoToolMatcher(const CiString& name, const AssignmentMap& must,
                             const AssignmentMap& others)
    : Matcher(name, "no_tool", {}, noToolNeeds(), must, others) {}

std::unique_ptr<Matcher> NoToolMatcher::clone() const {
    return std::make_unique<NoToolMatcher>(*this);
}

std::shared_ptr<Builder> NoToolMatcher::createBuilder(const Context&) const {
    return std::make_shared<NoToolBuilder>();
}

// A declaration may satisfy the need for NO_TOOL; the target must name it nevertheless.
MatchResult NoToolMatcher::matchTool(const Context& target) const {
    if (target.find(kVariable) == nullptr) {
        return {};
    }
    return {{{kVariable, MatchKind::ExactMatch}}, MatchNote::BuildPossible};
}

NoToolBuilder::NoToolBuilder() : Builder(noToolNeeds()) {}

std::shared_ptr<Context> NoToolBuilder::complete(TargetContext&, int) {
    return std::make_shared<Context>();
}

RecipeSet NoToolBuilder::createRecipes(TargetContext&) {
    return {{}, {}, true};
}

}  // namespace Vesk
