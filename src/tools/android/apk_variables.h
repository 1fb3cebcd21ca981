// The variables of Android packages.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kApkVariables;

/// What the builder consumes.
const AssignmentMap& androidApkSubjects();

/// The variables that say what is built with.
const AssignmentMap& androidToolSettings();

}  // namespace Vesk
