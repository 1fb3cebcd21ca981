// The variables of Microsoft's toolchain.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kMsvcVariables;

/// The variables that its builders consume.
const AssignmentMap& msvcSubjects();

}  // namespace Vesk
