// Files that a recipe's texts name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cache/tracked_path.h"
#include "run/recipe.h"

namespace Vesk {

/// Those of the files whose names, as seen from the root, stand in the recipe's command or in what
/// is written for it: a command may be given more files than its builder knows of, among its flags.
std::vector<std::string> filesMentioned(const Recipe& recipe, const std::vector<std::string>& files,
                                        const TrackingRoot& root);

}  // namespace Vesk
