#include "tools/static/basic_tool.h"

#include <utility>

#include "platform/files.h"
#include "run/build_env.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"

namespace Vesk {

namespace {

constexpr std::string_view kInterpreterSources[] = {kInterpreterTool.variable};
constexpr std::string_view kPowerShellSources[] = {kPowerShellTool.variable};

constexpr Misnomer kInterpreterMisnomers[] = {
    {"command", "cmdline"}, {"commands", "cmdline"},      {"cmd", "cmdline"},
    {"cmds", "cmdline"},    {"command_line", "cmdline"},  {"workdir", "cwd"},
    {"working_dir", "cwd"}, {"working_directory", "cwd"},
};
constexpr Misnomer kPowerShellMisnomers[] = {
    {"powershell", "pwsh"},
    {"workdir", "cwd"},
    {"working_dir", "cwd"},
    {"working_directory", "cwd"},
};

constexpr Variable kInterpreterVariables[] = {
    {kInterpreterTool.variable, "string, list", "required",
     "a command for the system's command interpreter, or several, which start together",
     R"("python3 make.py")"},
};
constexpr Variable kPowerShellVariables[] = {
    {kPowerShellTool.variable, "string, list", "required",
     "a command for PowerShell, or several, which start together", R"("Get-Date")"},
};
constexpr Variable kPlaceVariables[] = {
    {"cwd", "path", "the current directory", "the directory in which the commands run",
     R"x(P"(tests)")x"},
};
constexpr Variable kResultVariables[] = {
    {"result", "integer", "", "the status with which the commands ended"},
};

constexpr VariableGroup kInterpreterGroup = {"Commands", VariableRole::Input,
                                             kInterpreterVariables};
constexpr VariableGroup kPowerShellGroup = {"Commands", VariableRole::Input, kPowerShellVariables};
constexpr VariableGroup kPlaceGroup = {"Commands", VariableRole::Input, kPlaceVariables};
constexpr VariableGroup kResultGroup = {"Commands", VariableRole::Output, kResultVariables};
constexpr const VariableGroup* kInterpreterGroups[] = {&kInterpreterGroup, &kPlaceGroup,
                                                       &kResultGroup};
constexpr const VariableGroup* kPowerShellGroups[] = {&kPowerShellGroup, &kPlaceGroup,
                                                      &kResultGroup};

}  // namespace

const ToolTypeRegistration RegisterBasicMatcher({
    .word = kInterpreterTool.typeWord,
    .factory = matcherFactory<BasicMatcher>(),
    .sources = kInterpreterSources,
    .misnomers = kInterpreterMisnomers,
    .variables = kInterpreterGroups,
});
const ToolTypeRegistration RegisterPowerShellMatcher({
    .word = kPowerShellTool.typeWord,
    .factory = matcherFactory<PowerShellMatcher>(),
    .sources = kPowerShellSources,
    .misnomers = kPowerShellMisnomers,
    .variables = kPowerShellGroups,
});

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
    const Assignment* command = target.find(tool_.variable);
    if (command == nullptr || !command->value) {
        return {};
    }
    Recipe recipe;
    recipe.workingDirectory = platform::pathFromUtf8(target.textOf("cwd").value_or(""));
    recipe.shell = tool_.shell;

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
