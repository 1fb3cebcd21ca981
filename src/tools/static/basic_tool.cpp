#include "tools/static/basic_tool.h"

#include <utility>

#include "platform/files.h"
#include "run/build_env.h"
#include "types/list_value.h"
#include "types/simple_values.h"

namespace Vesk {

namespace {

constexpr std::string_view kSources[] = {"cmdline"};
constexpr Misnomer kMisnomers[] = {
    {"command", "cmdline"}, {"commands", "cmdline"},      {"cmd", "cmdline"},
    {"cmds", "cmdline"},    {"command_line", "cmdline"},  {"workdir", "cwd"},
    {"working_dir", "cwd"}, {"working_directory", "cwd"},
};

constexpr Variable kCommandVariables[] = {
    {"cmdline", "string, list", "required",
     "a command for the system's command interpreter, or several, which start together",
     R"("python3 make.py")"},
};
constexpr Variable kPlaceVariables[] = {
    {"cwd", "path", "the current directory", "the directory in which the commands run",
     R"x(P"(tests)")x"},
};
constexpr Variable kResultVariables[] = {
    {"result", "integer", "", "the status with which the commands ended"},
};
constexpr VariableGroup kCommandGroup = {"Commands", VariableRole::Input, kCommandVariables};
constexpr const VariableGroup* kVariables[] = {&kCommandGroup, &kCommandPlace, &kCommandResult};

const AssignmentMap& wantsTable() {
    static const AssignmentMap table = makeTable({{"cwd"}});
    return table;
}

const AssignmentMap& needsTable() {
    static const AssignmentMap table = makeTable({{"cmdline"}});
    return table;
}

}  // namespace

constinit const VariableGroup kCommandPlace = {"Commands", VariableRole::Input, kPlaceVariables};
constinit const VariableGroup kCommandResult = {"Commands", VariableRole::Output, kResultVariables};

const ToolTypeRegistration RegisterBasicMatcher({
    .word = "command",
    .factory = matcherFactory<BasicMatcher>(),
    .sources = kSources,
    .misnomers = kMisnomers,
    .variables = kVariables,
});

BasicMatcher::BasicMatcher(const CiString& name, const AssignmentMap& must,
                           const AssignmentMap& others)
    : Matcher(name, "command", wantsTable(), needsTable(), must, others) {}

std::unique_ptr<Matcher> BasicMatcher::clone() const {
    return std::make_unique<BasicMatcher>(*this);
}

std::shared_ptr<Builder> BasicMatcher::createBuilder(const Context&) const {
    return std::make_shared<BasicBuilder>("cmdline", shell::kInterpreter);
}

MatchResult BasicMatcher::matchTool(const Context&) const {
    return {{}, MatchNote::BuildPossible};
}

BasicBuilder::BasicBuilder(std::string commandVariable, std::uint32_t shell)
    : Builder(makeTable({{commandVariable}})),
      commandVariable_(std::move(commandVariable)),
      shell_(shell) {}

std::shared_ptr<Context> BasicBuilder::complete(TargetContext&, int exitCode) {
    auto results = std::make_shared<Context>();
    results->addAssignment(
        resolvedAssignment("result", std::make_shared<VeskInt>(exitCode), AssignModifier::Output),
        ModifierMode::Copy);
    return results;
}

RecipeSet BasicBuilder::createRecipes(TargetContext& target) {
    RecipeSet set;
    for (const auto& [key, assignment] : target.assignments()) {
        if (assignment.modifier == AssignModifier::Output) {
            set.assignments.push_back(assignment);
        }
    }
    set.ok = true;
    return set;
}

std::vector<Recipe> BasicBuilder::commandRecipes(TargetContext& target) {
    const Assignment* command = target.find(commandVariable_);
    if (command == nullptr || !command->value) {
        return {};
    }
    Recipe recipe;
    recipe.workingDirectory = platform::pathFromUtf8(target.textOf("cwd").value_or(""));
    recipe.shell = shell_;

    const auto* list = valueAs<VeskList>(command->value.get());
    if (list == nullptr) {
        recipe.command = command->value->toString();
        return {std::move(recipe)};
    }
    std::vector<Recipe> recipes;
    for (const ValuePtr& item : list->items) {
        if (item) {
            recipes.push_back(recipe);
            recipes.back().command = item->toString();
        }
    }
    return recipes;
}

}  // namespace Vesk
