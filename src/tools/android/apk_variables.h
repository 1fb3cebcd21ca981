// The variables of Android packages.
#pragma once

#include "tools/variables.h"

namespace Vesk {

extern const VariableGroups kApkVariables;

/// The variables that the builder consumes.
const AssignmentMap& androidApkSubjects();

/// The variables that choose the tools to build with.
const AssignmentMap& androidToolSettings();

}  // namespace Vesk
