// Running the recipes of a target.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "build/run/build_env.h"
#include "build/run/recipe.h"
#include "tools/builder.h"

namespace Vesk {

/// One recipe, the commands that the builder made of it, and how they ended.
struct Job {
    std::shared_ptr<const Recipe> recipe;
    std::vector<Recipe> commands;
    std::int32_t result = 0;    ///< 0: success; else the status of the command that failed
    std::string failedCommand;  ///< set with a result other than 0
    std::string startFailure;   ///< why that command could not be started, if so
};

/// Runs the recipes, stage by stage: all of a stage are started at once, each as a task of its own,
/// and joined in their order. A job ends at its first command that fails; the other jobs of the
/// stage run to their end. Throws VeskException "Build failed." then, after messages that say what
/// failed; Interrupted when the user asked to stop.
void runJobs(const Builder& builder, const std::vector<Recipe>& recipes,
             const BuildEnv& environment, const std::string& targetName);

/// Shows the commands that `runJobs` would run.
void showJobs(const Builder& builder, const std::vector<Recipe>& recipes,
              const BuildEnv& environment);

}  // namespace Vesk
