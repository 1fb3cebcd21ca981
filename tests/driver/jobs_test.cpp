// Recipes of several stages and commands.

#include "build/driver/jobs.h"

#include <gtest/gtest.h>

#include "support/console_capture.h"

namespace Vesk::test {
namespace {

/// A builder whose recipes are lists of commands, separated by "|".
class ListBuilder : public Builder {
  public:
    ListBuilder() : Builder({}) {}

    std::shared_ptr<Context> complete(TargetContext&, int) override { return nullptr; }
    RecipeSet createRecipes(TargetContext&) override { return {}; }
    std::vector<Recipe> commandsOf(const Recipe& recipe, const BuildEnv&) const override {
        std::vector<Recipe> commands;
        std::string rest = recipe.command;
        while (!rest.empty()) {
            const auto bar = rest.find('|');
            Recipe command = recipe;
            command.command = rest.substr(0, bar);
            commands.push_back(command);
            rest = bar == std::string::npos ? "" : rest.substr(bar + 1);
        }
        return commands;
    }
};

Recipe recipe(std::string command, std::uint32_t stage) {
    Recipe result;
    result.command = std::move(command);
    result.stage = stage;
    return result;
}

/// The echoes and failure messages of a run, in order.
std::string run(const std::vector<Recipe>& recipes) {
    const ListBuilder builder;
    const BuildEnv environment{std::filesystem::path()};
    ConsoleCapture capture;
    std::string ending = "ok";
    try {
        runJobs(builder, recipes, environment, "t");
    } catch (const VeskException& exception) {
        ending = exception.message();
    }
    return capture.text() + ending;
}

TEST(Jobs, StagesRunInOrderWhateverTheOrderOfTheRecipes) {
    EXPECT_EQ(run({recipe("exit 0", 2), recipe("exit 00", 0), recipe("exit 000", 1)}),
              "Starting build job\nexit 00\n"
              "Starting build job\nexit 000\n"
              "Starting build job\nexit 0\n"
              "ok");
}

TEST(Jobs, AJobEndsAtItsFirstFailureAndLaterStagesDoNotRun) {
    EXPECT_EQ(run({recipe("exit 0|exit 5|exit 6", 0), recipe("exit 7", 1)}),
              "Starting build job\nexit 0\nexit 5\n"
              "Command ended with status 5: exit 5\n"
              "Build of t failed. Exiting..\n"
              "Build failed.");
}

TEST(Jobs, AllJobsOfAStageAreJoinedAndReportedInOrder) {
    const std::string text =
        run({recipe("exit 1", 0), recipe("exit 0|exit 00", 0), recipe("exit 2", 0)});
    EXPECT_EQ(text.find("Starting build job\nStarting build job\nStarting build job\n"), 0u);
    EXPECT_NE(text.find("exit 00\n"), std::string::npos);
    EXPECT_NE(text.find("Command ended with status 1: exit 1\n"
                        "Command ended with status 2: exit 2\n"
                        "Build of t failed. Exiting..\n"
                        "Build failed."),
              std::string::npos)
        << text;
}

TEST(Jobs, ACommandThatCannotBeStartedIsExplained) {
    Recipe lost = recipe("exit 0", 0);
    lost.workingDirectory = "there is no such directory";
    const std::string text = run({lost});
    EXPECT_NE(text.find("'there is no such directory'"), std::string::npos) << text;
    EXPECT_EQ(text.find("Command ended"), std::string::npos) << text;
}

}  // namespace
}  // namespace Vesk::test
