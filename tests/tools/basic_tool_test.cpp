#include "tools/basic_tool.h"

#include <gtest/gtest.h>

#include "build/run/build_env.h"
#include "platform/files.h"
#include "tools/powershell_tool.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

std::shared_ptr<Builder> commandBuilder(const TargetContext& target) {
    return BasicMatcher("t", {}, {}).createBuilder(target);
}

std::vector<std::string> commandsOf(const std::vector<Assignment>& assignments) {
    const auto target = targetOf(assignments);
    std::vector<std::string> commands;
    for (const Recipe& recipe : commandBuilder(*target)->commandRecipes(*target)) {
        commands.push_back(recipe.command);
    }
    return commands;
}

TEST(BasicBuilder, MakesARecipeForEachCommand) {
    using Commands = std::vector<std::string>;
    EXPECT_EQ(commandsOf({var("cmdline", str("echo \"a b\" & c"))}), Commands{"echo \"a b\" & c"});
    EXPECT_EQ(commandsOf({var("CMDLINE", list({str("one"), nullptr, num(2)}))}),
              (Commands{"one", "2"}));
    EXPECT_EQ(commandsOf({var("cmdline", list({}))}), Commands{});
    EXPECT_EQ(commandsOf({var("cmdline")}), Commands{});
    EXPECT_EQ(commandsOf({var("pwsh", str("x"))}), Commands{});
}

TEST(BasicBuilder, EveryCommandHasTheDirectoryAndTheShell) {
    const auto directory = std::filesystem::temp_directory_path() / "dir \u00e4 b";
    const auto target = targetOf({var("cmdline", list({str("a"), str("b")})),
                                  var("cwd", path(platform::pathToUtf8(directory)))});
    const auto recipes = commandBuilder(*target)->commandRecipes(*target);
    ASSERT_EQ(recipes.size(), 2u);
    EXPECT_EQ(recipes[0].workingDirectory, directory);
    EXPECT_EQ(recipes[1].workingDirectory, directory);
    EXPECT_EQ(recipes[1].shell, shell::kInterpreter);

    const auto scripted = targetOf({var("pwsh", str("Get-Date")), var("cmdline", str("x"))});
    const auto builder = PowerShellMatcher("p", {}, {}).createBuilder(*scripted);
    const auto scripts = builder->commandRecipes(*scripted);
    ASSERT_EQ(scripts.size(), 1u);
    EXPECT_EQ(builder->name(), "pwsh");
    EXPECT_EQ(scripts[0].command, "Get-Date");
    EXPECT_EQ(scripts[0].shell, shell::kPowershell);
    EXPECT_TRUE(scripts[0].workingDirectory.empty());

    const BuildEnv environment{std::filesystem::path()};
    const auto commands = builder->commandsOf(scripts[0], environment);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].command, "Get-Date");
}

TEST(BasicBuilder, OutputsAreThoseOfTheTargetAndTheResult) {
    const auto target = targetOf(
        {out("b", str("2")), var("c", str("3")), out("A", num(1)), var("cmdline", str("x"))});
    const auto builder = commandBuilder(*target);
    EXPECT_EQ(builder->name(), "cmdline");
    EXPECT_EQ(builder->subjects().size(), 1u);

    const RecipeSet set = builder->createRecipes(*target);
    EXPECT_TRUE(set.ok);
    EXPECT_TRUE(set.recipes.empty());
    ASSERT_EQ(set.assignments.size(), 2u);
    EXPECT_EQ(set.assignments[0].toDisplayString(), "A = 1");
    EXPECT_EQ(set.assignments[1].toDisplayString(), "b = \"2\"");

    const auto results = builder->complete(*target, 300);
    ASSERT_EQ(results->assignments().size(), 1u);
    EXPECT_EQ(results->find("result")->toDisplayString(), "result = 300");
    EXPECT_EQ(results->find("result")->modifier, AssignModifier::Output);
}

}  // namespace
}  // namespace Vesk::test
