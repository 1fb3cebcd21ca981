// The variables of Microsoft's toolchain.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kMsvcVariables;

/// What its builders consume.
const AssignmentMap& msvcSubjects();

}  // namespace Vesk
