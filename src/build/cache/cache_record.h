// What the cache remembers of a target, and what it is asked.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "build/run/recipe.h"
#include "types/assignment.h"

namespace Vesk {

/// The part of a recipe that decides whether its result still stands.
struct CacheRecipe {
    std::vector<RecipeInput> inputs;
    std::vector<Assignment> outputs;
};

/// A build of a target that succeeded.
struct CacheRecord {
    std::string key;
    std::vector<CacheRecipe> recipes;
    std::vector<Assignment> environment;  ///< environment and context that it ran with

    /// The files whose states belong to the record; the cache examines them itself. Absolute.
    std::vector<std::filesystem::path> inputFiles;
    std::vector<std::filesystem::path> outputFiles;
};

/// What a build of the target would consist of now. A record matches when its recipes' inputs and
/// its environment equal these and its files are as the build left them.
struct CacheRequest {
    std::vector<CacheRecipe> recipes;  ///< outputs are not compared: a build makes them
    std::vector<Assignment> environment;
    std::vector<std::filesystem::path> inputFiles;  ///< read by the commands, as far as known yet
};

/// Whether two assignments say the same: name without regard to case, operator, modifier and value
/// with its kind.
bool sameAssignment(const Assignment& a, const Assignment& b);

/// Whether the values are of one kind and equal all the way down. Unlike VeskValue::equals this
/// never throws, keeps raw and plain strings apart and does not look at the file system.
bool sameValue(const ValuePtr& a, const ValuePtr& b);

/// Whether the recipes' inputs and the environment are equal, in order. Files are not looked at.
bool sameRequest(const CacheRecord& record, const CacheRequest& request);

}  // namespace Vesk
