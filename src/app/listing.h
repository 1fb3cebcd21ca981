// What the list modes print.
#pragma once

#include <string>

#include "project/project.h"

namespace Vesk {

/// The names in sorted order, a line each.
void listProfiles(const Project& project);

/// The names in the project's order, a line each.
void listUnits(const Project& project);

/// The unit's targets in the order of its files, each with its DESCRIPTION, else with what it
/// needs. "1" is the main unit. Throws NotFoundException of kind "Unit".
void listTargets(const Project& project, const std::string& unitName);

}  // namespace Vesk
