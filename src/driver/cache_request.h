// What decides whether a target must be built, put into the words of the cache.
#pragma once

#include <string>
#include <vector>

#include "cache/cache_record.h"
#include "cache/tracked_path.h"
#include "driver/hidden_values.h"
#include "driver/request_text.h"
#include "run/recipe.h"
#include "tools/builder.h"
#include "types/model/target.h"

namespace Vesk {

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
CacheRequest cacheRequest(const TargetInputs& inputs, const TrackingRoot& root);

}  // namespace Vesk
