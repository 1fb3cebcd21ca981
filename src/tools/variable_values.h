// The values among which a variable is a choice.
#pragma once

#include <string>
#include <vector>

#include "tools/variables.h"

namespace Vesk {

/// Those that the variable's table lists: in its type, as in "`yes`, `no`", or at the start of what
/// a string means. Empty for a variable that takes other values.
std::vector<std::string> valuesOf(const Variable& variable);

}  // namespace Vesk
