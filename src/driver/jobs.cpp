#include "driver/jobs.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <fmt/format.h>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <system_error>
#include <unordered_set>

#include "base/attempt.h"
#include "base/collector.h"
#include "base/console.h"
#include "base/interruption.h"
#include "driver/value_paths.h"
#include "events/events.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "run/run_command.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

/// How long a stage runs before what it has done is worth keeping.
constexpr std::chrono::seconds kInterval{30};

/// Nothing may leave the thread of a job but the status and the reason.
std::int32_t runAction(const std::function<void()>& action, std::string& failure) {
    try {
        const auto error = failureOf(action);
        failure = error.value_or("");
        return error ? 1 : 0;
    } catch (const Interrupted&) {
        return 0;  // who waits for the job sees the same request
    }
}

std::int32_t runOrAct(Job& job, const Command& command, CommandView* view) {
    const auto& action = job.recipe->action;
    return action ? runAction(action, job.startFailure)
                  : runCommand(command, &job.startFailure, view);
}

std::int32_t runOne(Job& job, std::size_t number) {
    const Command& command = job.commands[number];
    if (job.shown.empty()) {
        return runOrAct(job, command, nullptr);
    }
    const events::Lane lane;
    CommandView view{events::newId(), {}};
    events::emit(events::CommandStarted{view.id, job.seenAs, job.step, job.recipe->stage,
                                        lane.number(), job.shown[number], job.makes});
    const std::int32_t status = runOrAct(job, command, &view);
    events::emit(events::CommandFinished{view.id, status, view.usage});
    return status;
}

/// The first file that a recipe makes, or else the first that it reads.
std::string madeBy(const Recipe& recipe) {
    for (const Assignment& output : recipe.outputs) {
        if (const auto files = pathsIn(output); !files.empty()) {
            return files.front();
        }
    }
    for (const RecipeInput& input : recipe.inputs) {
        if (const auto files = pathsIn(input.intermediate.value_or(input.assignment));
            !files.empty()) {
            return files.front();
        }
    }
    return {};
}

/// The body of a job's task. Writes to its own job only.
void runJob(Job& job) {
    const auto began = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < job.commands.size(); ++i) {
        const Command& command = job.commands[i];
        if (platform::interruptSignal() != 0) {
            return;
        }
        const std::int32_t status = runOne(job, i);
        if (status != 0) {
            job.timedOut =
                command.deadline && std::chrono::steady_clock::now() >= *command.deadline;
            job.failedCommand = command.command;
            job.result = status;
            return;
        }
    }
    job.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    // A command that the interruption ended may not say so.
    job.succeeded = platform::interruptSignal() == 0;
}

std::future<void> start(const std::function<void()>& work) {
    try {
        return std::async(std::launch::async, work);
    } catch (const std::system_error&) {
        // The system has no more threads: this one does the work when it is joined.
        return std::async(std::launch::deferred, work);
    }
}

void join(std::future<void>& task, const std::function<void()>& onInterval) {
    while (task.wait_for(kInterval) == std::future_status::timeout) {
        if (onInterval) {
            onInterval();
        }
    }
    task.get();
}

/// Makes room for what commands write.
class Preparation {
  public:
    void prepare(const Recipe& recipe) {
        const bool remove = recipe.oldOutputs == OldOutputs::Go;
        for (const Assignment& output : recipe.outputs) {
            for (const std::string& file : pathsIn(output)) {
                prepareOutput(platform::pathFromUtf8(file), remove);
            }
        }
        if (remove && !recipe.outputDirectory.empty()) {
            renew(recipe.outputDirectory);
        }
        if (!recipe.dependencyFile.empty()) {
            // One from an earlier run would be believed if the command wrote none.
            prepareOutput(recipe.dependencyFile, true);
        }
        for (const SupportFile& file : recipe.supportFiles) {
            makeDirectory(file.path.parent_path());
            std::error_code error;
            if (!platform::writeWholeFile(file.path, file.content, platform::Append::no, error)) {
                throw VeskException("Unable to write '" + platform::pathToUtf8(file.path) +
                                    "': " + error.message());
            }
        }
    }

  private:
    void prepareOutput(const fs::path& file, bool remove) {
        makeDirectory(file.parent_path());
        std::error_code error;
        if (remove && !platform::isDirectory(file) && !platform::removeFile(file, error) && error) {
            throw VeskException("Unable to remove '" + platform::pathToUtf8(file) +
                                "', which is to be made again: " + error.message());
        }
    }

    static void renew(const fs::path& directory) {
        std::error_code error;
        platform::removeTree(directory, error);
        if (!error) {
            platform::makeDirectories(directory, error);
        }
        if (error) {
            throw VeskException("Unable to empty the directory '" +
                                platform::pathToUtf8(directory) + "': " + error.message());
        }
    }

    void makeDirectory(const fs::path& directory) {
        if (directory.empty() || !made_.insert(directory.native()).second) {
            return;
        }
        std::error_code error;
        platform::makeDirectories(directory, error);
        if (error) {
            throw VeskException("Unable to create the directory '" +
                                platform::pathToUtf8(directory) + "': " + error.message());
        }
    }

    std::unordered_set<fs::path::string_type> made_;
};

std::string reasonOf(const Job& job) {
    return job.startFailure.empty()
               ? fmt::format("Command ended with status {}: {}", job.result, job.failedCommand)
               : job.startFailure;
}

}  // namespace

Stage::Stage(const Builder* builder, const SharedRecipes& recipes, const BuildEnv& environment) {
    Preparation preparation;
    for (const auto& recipe : recipes) {
        preparation.prepare(*recipe);
        auto job = std::make_unique<Job>();
        job->recipe = recipe;
        job->commands =
            builder != nullptr ? builder->commandsOf(*recipe, environment) : commandsIn(*recipe);
        jobs_.push_back(std::move(job));
    }
}

void Stage::show(const events::Subject& target, const HiddenValues& hidden) {
    if (!events::listened()) {
        return;
    }
    for (const auto& job : jobs_) {
        job->seenAs = target;
        job->step = events::newId();
        job->makes = madeBy(*job->recipe);
        for (const Command& command : job->commands) {
            job->shown.push_back(hidden.covered(command.command));
        }
    }
}

void Stage::run(const StageOptions& options) {
    std::mutex telling;
    const auto tell = [&telling](const std::function<void()>& hook) {
        if (hook) {
            const std::lock_guard lock(telling);
            hook();
        }
    };
    const auto runTelling = [&](Job& job) {
        tell(options.onBegin);
        runJob(job);
        tell(options.onEnd);
    };
    std::vector<Job*> queued;
    std::vector<Job*> others;
    std::vector<std::function<void()>> tasks;
    for (const auto& job : jobs_) {
        (job->recipe->start == Start::Queued ? queued : others).push_back(job.get());
    }
    std::atomic<std::size_t> nextOther{0};
    const auto workOffOthers = [&] {
        for (std::size_t i = nextOther++; i < others.size(); i = nextOther++) {
            runTelling(*others[i]);
        }
    };
    const std::size_t most = options.maxCommands == 0 ? others.size() : options.maxCommands;
    for (std::size_t i = 0; i < std::min(most, others.size()); ++i) {
        tasks.emplace_back(workOffOthers);
    }
    std::atomic<std::size_t> next{0};
    std::atomic<bool> failed{false};
    const auto workOff = [&] {
        for (std::size_t i = next++; i < queued.size(); i = next++) {
            if (failed && !options.keepGoing) {
                return;
            }
            runTelling(*queued[i]);
            failed = failed || queued[i]->result != 0;
        }
    };
    for (unsigned i = 0; i < options.workers && i < queued.size(); ++i) {
        tasks.emplace_back(workOff);
    }
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        console::normal("Starting build job");
    }
    if (tasks.size() == 1 && queued.empty()) {
        tasks.front()();
        return;
    }
    std::vector<std::future<void>> running;
    running.reserve(tasks.size());
    for (const auto& task : tasks) {
        running.push_back(start(task));
    }
    for (std::future<void>& task : running) {
        join(task, options.onInterval);
    }
}

void Stage::runCollected(const std::string& prefix, unsigned most) {
    std::atomic<std::size_t> next{0};
    const auto workOff = [&] {
        for (std::size_t i = next++; i < jobs_.size(); i = next++) {
            console::Collector collector(prefix);
            runJob(*jobs_[i]);
            jobs_[i]->transcript = collector.take();
        }
    };
    const std::size_t count = most == 0 ? jobs_.size() : std::min<std::size_t>(most, jobs_.size());
    std::vector<std::future<void>> others;
    for (std::size_t i = 1; i < count; ++i) {
        others.push_back(start(workOff));
    }
    workOff();
    for (std::future<void>& other : others) {
        other.get();
    }
}

void Stage::showTranscripts() const {
    for (const auto& job : jobs_) {
        console::repeat(job->transcript);
    }
}

bool Stage::reportFailures() const {
    bool failed = false;
    for (const auto& job : jobs_) {
        if (job->result != 0) {
            console::error("{}", reasonOf(*job));
            failed = true;
        }
    }
    return failed;
}

std::string Stage::failureText() const {
    for (const auto& job : jobs_) {
        if (job->result != 0) {
            return console::transcriptText(job->transcript) + reasonOf(*job);
        }
    }
    return {};
}

void makeOutputDirectories(const std::vector<Assignment>& outputs) {
    std::vector<std::string> directories;
    for (const Assignment& output : outputs) {
        eachPath(output.value.get(), [&directories](const std::string& file) {
            directories.emplace_back(directoryOf(file));
        });
    }
    sortUnique(directories);
    makeDirectories(directories);
}

void makeDirectories(const std::vector<std::string>& directories) {
    for (const std::string& directory : directories) {
        std::error_code ignored;
        platform::makeDirectories(platform::pathFromUtf8(directory), ignored);
    }
}

void showCommands(const Builder& builder, const SharedRecipes& recipes,
                  const BuildEnv& environment) {
    for (const auto& recipe : recipes) {
        for (const Command& command : builder.commandsOf(*recipe, environment)) {
            console::normal("{}", command.command);
        }
    }
}

}  // namespace Vesk
