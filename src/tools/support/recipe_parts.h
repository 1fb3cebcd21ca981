// Pieces of the recipes and outputs of C-family targets.
#pragma once

#include <string>
#include <vector>

#include "run/recipe.h"
#include "types/model/target.h"

namespace Vesk {

/// Files that a recipe reads. `name` is the variable that they go by.
void addInput(Recipe& recipe, const char* name, const std::string& path);
void addInputs(Recipe& recipe, const char* name, const std::vector<std::string>& paths);

/// A file that a recipe makes.
void addOutput(Recipe& recipe, const char* name, const std::string& path);

/// OUTPUT_NAME, or the target's own name.
std::string outputNameOf(const TargetContext& target);

/// The texts as a list of strings that are not expanded.
ValuePtr textValues(const std::vector<std::string>& texts);

/// Adds an output that dependants with "+" append to their own variable; does nothing for an empty
/// list.
void exportAppend(std::vector<Assignment>& outputs, const char* variable, const ValuePtr& list);

}  // namespace Vesk
