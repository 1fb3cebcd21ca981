// Variables that have no effect.
#pragma once

#include "app/doubts.h"
#include "app/session.h"

namespace Vesk {

/// Reports the variables of the command line and of the selected profile that no tool looks at and
/// that nothing in the projects names, with what they were probably meant to be; those of a profile
/// only where that is known. Targets that are not built now count too. Throws VeskException where
/// doubts are refused.
void reportUnreadVariables(Doubts doubts, const Session& session);

}  // namespace Vesk
