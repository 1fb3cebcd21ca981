// The variables of toolchains that take GCC's options.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kGnuStyleVariables;

/// What the builders consume that compile, archive and link.
const AssignmentMap& gnuStyleSubjects();

/// What a builder consumes that copies an object.
const AssignmentMap& objectCopySubjects();

}  // namespace Vesk
