// The variables of C3 targets.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kC3Variables;

/// The variables that the builder consumes.
const AssignmentMap& c3Subjects();

}  // namespace Vesk
