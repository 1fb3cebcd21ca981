// The jobs of one stage.

#include "driver/jobs.h"

#include <gtest/gtest.h>

#include "driver/cache_step.h"
#include "support/console_capture.h"

namespace Vesk::test {
namespace {

/// A builder whose recipes are lists of commands, separated by "|".
class ListBuilder : public Builder {
  public:
    ListBuilder() : Builder({}) {}

    std::shared_ptr<Context> complete(TargetContext&, int) override { return nullptr; }
    RecipeSet createRecipes(TargetContext&) override { return {}; }
    std::vector<Command> commandsOf(const Recipe& recipe, const BuildEnv&) const override {
        std::vector<Command> commands;
        std::string rest = recipe.command;
        while (!rest.empty()) {
            const auto bar = rest.find('|');
            Command command = recipe;
            command.command = rest.substr(0, bar);
            commands.push_back(command);
            rest = bar == std::string::npos ? "" : rest.substr(bar + 1);
        }
        return commands;
    }
};

Recipe recipe(std::string command) {
    Recipe result;
    result.command = std::move(command);
    return result;
}

Recipe queued(std::string command) {
    Recipe result = recipe(std::move(command));
    result.start = Start::Queued;
    return result;
}

struct StageRun {
    std::string messages;   ///< echoes and failures, in order
    std::string succeeded;  ///< a letter for each recipe: y or n
    bool failed = false;

    StageRun(const std::vector<Recipe>& recipes, const StageOptions& options = {}) {
        std::vector<std::shared_ptr<const Recipe>> shared;
        for (const Recipe& recipe : recipes) {
            shared.push_back(std::make_shared<const Recipe>(recipe));
        }
        const ListBuilder builder;
        const BuildEnv environment{std::filesystem::path()};
        ConsoleCapture capture;
        Stage stage(&builder, shared, environment);
        stage.run(options);
        failed = stage.reportFailures();
        for (const auto& job : stage.jobs()) {
            succeeded += job->succeeded ? 'y' : 'n';
        }
        messages = capture.text();
    }
};

TEST(Stage, AJobEndsAtItsFirstFailure) {
    const StageRun run({recipe("exit 0|exit 5|exit 6")});
    EXPECT_EQ(run.messages,
              "Starting build job\nexit 0\nexit 5\nCommand ended with status 5: exit 5\n");
    EXPECT_TRUE(run.failed);
}

TEST(Stage, QueuedJobsShareTheirWorkers) {
    const std::vector<Recipe> recipes = {queued("exit 0"), queued("exit 3"), queued("exit 00"),
                                         queued("exit 000")};
    const StageRun stops(recipes);
    EXPECT_EQ(stops.succeeded, "ynnn") << "one worker stops at a failure";
    EXPECT_EQ(stops.messages.find("exit 00"), std::string::npos);

    StageOptions options;
    options.keepGoing = true;
    EXPECT_EQ(StageRun(recipes, options).succeeded, "ynyy");
    options.workers = 3;
    const StageRun three(recipes, options);
    EXPECT_EQ(three.succeeded, "ynyy");
    EXPECT_EQ(three.messages.find("Starting build job\nStarting build job\nStarting build job\n"),
              0u);
}

TEST(Stage, ACommandThatCannotBeStartedIsExplained) {
    Recipe lost = recipe("exit 0");
    lost.workingDirectory = "there is no such directory";
    const StageRun run({lost});
    EXPECT_NE(run.messages.find("'there is no such directory'"), std::string::npos) << run.messages;
    EXPECT_EQ(run.messages.find("Command ended"), std::string::npos) << run.messages;
}

TEST(Stage, NoMoreWorkersThanAskedForAndThanThereIsWork) {
    struct Case {
        int jobs;
        std::size_t limit;
        std::size_t pieces;
        unsigned workers;
    };
    for (const auto& [jobs, limit, pieces, workers] :
         {Case{0, 8, 8, 1}, Case{1, 8, 8, 1}, Case{4, 8, 8, 4}, Case{4, 2, 8, 2}, Case{4, 8, 3, 3},
          Case{4, 8, 0, 1}, Case{-1, 8, 100, 8}}) {
        EXPECT_EQ(workerCount(jobs, limit, pieces), workers) << jobs << " " << limit;
    }
}

}  // namespace
}  // namespace Vesk::test
