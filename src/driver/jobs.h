// Running the recipes of one stage of a target.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "driver/hidden_values.h"
#include "events/event.h"
#include "run/build_env.h"
#include "run/recipe.h"
#include "tools/builder.h"

namespace Vesk {

using SharedRecipes = std::vector<std::shared_ptr<const Recipe>>;

/// One recipe, the commands that the builder made of it, and how they ended.
struct Job {
    std::shared_ptr<const Recipe> recipe;
    std::vector<Command> commands;
    std::int32_t result = 0;    ///< 0: success; else the status of the command that failed
    std::string failedCommand;  ///< set with a result other than 0
    std::string startFailure;   ///< why it could not be started, or why an action failed
    bool timedOut = false;      ///< with a failure: its deadline had passed
    double seconds = 0;         ///< how long its commands took, if all succeeded
    std::string transcript;     ///< what it wrote, if that was collected

    /// For events: whose it is, the commands as they may be shown, and what they make. No commands:
    /// nobody listens.
    events::Subject seenAs;
    events::Id step = 0;
    std::vector<std::string> shown;
    std::string makes;

    /// All commands have run and succeeded. May be read while others of the stage still run.
    std::atomic<bool> succeeded = false;
};

/// How the jobs of a stage share the machine.
struct StageOptions {
    unsigned workers = 1;              ///< queued recipes run on this many tasks
    unsigned maxCommands = 0;          ///< and the others on this many; 0: each on its own
    bool keepGoing = false;            ///< queued recipes go on after one has failed
    std::function<void()> onInterval;  ///< called now and then while the stage runs

    /// Called when a job begins, and when it has ended, one call at a time, on the thread that runs
    /// it. May be empty.
    std::function<void()> onBegin = {};
    std::function<void()> onEnd = {};
};

/// Each recipe is a job. Those that start with their stage are started at once, each as a task of
/// its own, unless the user limits them; the queued ones are worked off by as many tasks as there
/// are workers, which take the next one when they are done with one. All tasks are waited for,
/// whatever happens.
class Stage {
  public:
    /// Writes the files and makes the directories that the commands need, and removes what is in
    /// their way. Throws VeskException when that fails.
    /// A builder that is not there makes nothing else of recipes than their commands.
    Stage(const Builder* builder, const SharedRecipes& recipes, const BuildEnv& environment);

    /// From now on events tell of its commands, as far as anybody listens.
    void show(const events::Subject& target, const HiddenValues& hidden);

    void run(const StageOptions& options);

    /// Runs all jobs, so many at once (0: all), and collects what they write, under this prefix.
    void runCollected(const std::string& prefix, unsigned most);

    /// In the order of the recipes.
    const std::vector<std::unique_ptr<Job>>& jobs() const noexcept { return jobs_; }

    /// Shows what the jobs wrote, each one's in one piece.
    void showTranscripts() const;

    /// Says what has failed, if anything has.
    bool reportFailures() const;

    /// The lines of the first failure: what its job wrote, if that was collected, and the reason.
    std::string failureText() const;

  private:
    std::vector<std::unique_ptr<Job>> jobs_;
};

/// Makes the directories of files that a target says it makes, as far as they can be made: where
/// one cannot, the command that writes there says why.
void makeOutputDirectories(const std::vector<Assignment>& outputs);
void makeDirectories(const std::vector<std::string>& directories);

/// Shows the commands that the recipes would run.
void showCommands(const Builder& builder, const SharedRecipes& recipes,
                  const BuildEnv& environment);

}  // namespace Vesk
