// What all visits of one build share.
#pragma once

#include <functional>

#include "cache/project_cache.h"
#include "driver/build_events.h"
#include "driver/build_reasons.h"
#include "driver/hidden_values.h"
#include "project/project_catalog.h"
#include "tools/toolbox.h"

namespace Vesk {

class StandingVisits;
class VisitKeeper;
class VisitTree;

struct DriverOptions {
    int jobCount = 1;          ///< -j; 0 and 1: one at a time of what can be spread
    bool rebuild = false;      ///< take nothing from the cache
    bool dryRun = false;       ///< show the commands, run and write nothing
    bool keepGoing = false;    ///< after a failure go on with what does not need the failed target
    bool onlyRecipes = false;  ///< with a dry run: no cache is asked; outputs are what they will be
    HiddenValues hidden = {};  ///< that no record shows; those of ENV come on top
    unsigned maxCommands = 0;  ///< of a target's list, how many run at once; 0: all

    /// Gets the reasons of all that is built; null: nobody wants to know. Needed for a dry run.
    BuildReasons* reasons = nullptr;
};

/// All that is referred to outlives the build.
struct BuildSetting {
    const ProjectCatalog& catalog;
    const Toolbox& staticTools;
    std::function<const Toolbox&(const Project&)> declaredTools;  ///< of a project
    std::function<ProjectCache&(const Project&)> cacheOf;
    DriverOptions options;

    /// Told of the recipes of every target that is visited, whether they run or not; or empty.
    std::function<void(const std::vector<Recipe>&)> onRecipes = {};

    BuildEvents* events = &noEvents();
    VisitKeeper* keeper = nullptr;  ///< null: every visit is made, and none is kept
    VisitTree* tree = nullptr;      ///< gets all visits; null: nobody wants to know

    /// Of an earlier run, to be passed over. Null: every visit is looked at. Needs a tree.
    StandingVisits* standing = nullptr;
};

}  // namespace Vesk
