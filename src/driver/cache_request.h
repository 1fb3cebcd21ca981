// What decides whether a target must be built, put into the words of the cache.
#pragma once

#include <string>
#include <vector>

#include "cache/cache_record.h"
#include "cache/tracked_path.h"
#include "driver/hidden_values.h"
#include "run/recipe.h"
#include "tools/builder.h"
#include "types/target.h"

namespace Vesk {

/// A dependency as its dependant remembers it.
struct DependencyStamp {
    std::string name;   ///< unit::target
    std::string stamp;  ///< new whenever it was built, where no output file tells what it made
};

/// All that a visit knows before it asks the cache.
struct TargetInputs {
    const TargetContext& target;
    const Builder& builder;
    const std::vector<Assignment>& outputs;  ///< of the target, as far as known yet
    const std::vector<Recipe>& recipes;
    const std::vector<DependencyStamp>& dependencies;
    HiddenValues hidden = {};  ///< that the request does not show; those of ENV come on top
};

/// What a build of the target would consist of: the variables that its builder consumes, the files
/// that path values name, the recipes with their commands, the environment of the commands and the
/// settings of the toolchain.
CacheRequest cacheRequest(const TargetInputs& question, const TrackingRoot& root);

/// The process environment of a target's commands: a nested context of this name.
inline constexpr const char* kEnvironmentVariable = "ENV";

/// The files that path values of an assignment name, as the cache tracks them.
std::vector<std::string> pathsIn(const Assignment& assignment);

}  // namespace Vesk
