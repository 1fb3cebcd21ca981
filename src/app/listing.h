// What the list modes print.
#pragma once

#include <string>

#include "project/implicit_layers.h"
#include "project/project.h"

namespace Vesk {

/// The names in sorted order, a line each.
void listProfiles(const Project& project);

/// The names in the project's order, a line each.
void listUnits(const Project& project);

/// The unit's targets in the order of its files, each with the value of its DESCRIPTION, else with
/// what it needs. `implicit` is what every target of the project sees; references to what only a
/// build can tell are left out. "1" is the main unit. Throws NotFoundException of kind "Unit".
void listTargets(const Project& project, const std::string& unitName,
                 const ImplicitLayers& implicit);

}  // namespace Vesk
