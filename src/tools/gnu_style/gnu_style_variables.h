// The variables of toolchains that take GCC's options.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kGnuStyleVariables;

/// What the builders that compile, archive and link consume.
const AssignmentMap& gnuStyleSubjects();

/// What a builder that copies an object consumes.
const AssignmentMap& objectCopySubjects();

}  // namespace Vesk
