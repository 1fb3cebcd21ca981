#include "build/driver/jobs.h"

#include <algorithm>
#include <future>
#include <map>
#include <system_error>

#include "base/console.h"
#include "build/driver/build_errors.h"
#include "build/run/run_command.h"
#include "platform/interrupt.h"

namespace Vesk {
namespace {

using Stages = std::map<std::uint32_t, std::vector<const Recipe*>>;

Stages byStage(const std::vector<Recipe>& recipes) {
    Stages stages;
    for (const Recipe& recipe : recipes) {
        stages[recipe.stage].push_back(&recipe);
    }
    return stages;
}

/// The body of a job's task. Writes to its own job only.
std::int32_t runJob(Job& job) {
    for (const Recipe& command : job.commands) {
        if (platform::interruptSignal() != 0) {
            return 0;  // the joining thread sees the interruption itself
        }
        const std::int32_t status = runCommand(command, &job.startFailure);
        if (status != 0) {
            job.failedCommand = command.command;
            return status;
        }
    }
    return 0;
}

std::future<std::int32_t> startJob(Job& job) {
    try {
        return std::async(std::launch::async, [&job] { return runJob(job); });
    } catch (const std::system_error&) {
        // The system has no more threads: this one does the work when it is joined.
        return std::async(std::launch::deferred, [&job] { return runJob(job); });
    }
}

std::vector<Job> createJobs(const Builder& builder, const std::vector<const Recipe*>& recipes,
                            const BuildEnv& environment) {
    std::vector<Job> jobs;
    jobs.reserve(recipes.size());
    for (const Recipe* recipe : recipes) {
        console::normal("Starting build job");
        jobs.emplace_back().recipe = std::make_shared<const Recipe>(*recipe);
    }
    for (Job& job : jobs) {
        job.commands = builder.commandsOf(*job.recipe, environment);
    }
    return jobs;
}

/// Runs all jobs and waits for all of them, whatever happens.
void runAndJoin(std::vector<Job>& jobs) {
    if (jobs.size() == 1) {
        jobs.front().result = runJob(jobs.front());
        return;
    }
    std::vector<std::future<std::int32_t>> tasks;
    tasks.reserve(jobs.size());
    for (Job& job : jobs) {
        tasks.push_back(startJob(job));
    }
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        jobs[i].result = tasks[i].get();
    }
}

void reportFailure(const Job& job) {
    if (!job.startFailure.empty()) {
        console::error("{}", job.startFailure);
    } else {
        console::error("Command ended with status {}: {}", job.result, job.failedCommand);
    }
}

}  // namespace

void stopIfInterrupted() {
    if (const int signal = platform::interruptSignal(); signal != 0) {
        throw Interrupted(signal);
    }
}

void runJobs(const Builder& builder, const std::vector<Recipe>& recipes,
             const BuildEnv& environment, const std::string& targetName) {
    for (const auto& [stage, stageRecipes] : byStage(recipes)) {
        std::vector<Job> jobs = createJobs(builder, stageRecipes, environment);
        runAndJoin(jobs);
        stopIfInterrupted();
        bool failed = false;
        for (const Job& job : jobs) {
            if (job.result != 0) {
                reportFailure(job);
                failed = true;
            }
        }
        if (failed) {
            console::error("Build of {} failed. Exiting..", targetName);
            throw BuildFailed();
        }
    }
}

void showJobs(const Builder& builder, const std::vector<Recipe>& recipes,
              const BuildEnv& environment) {
    for (const auto& [stage, stageRecipes] : byStage(recipes)) {
        for (const Recipe* recipe : stageRecipes) {
            for (const Recipe& command : builder.commandsOf(*recipe, environment)) {
                console::normal("{}", command.command);
            }
        }
    }
}

}  // namespace Vesk
