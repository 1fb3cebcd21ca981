// Reading the unit files that a project file lists.
#pragma once

#include "grammar/model.h"
#include "project/project.h"

namespace Vesk {

class UnitOutlines;

/// Reads every listed unit and adds it to the project, in the file's order; each file once. Throws
/// VeskException for a project without units, a unit without files, a unit that is listed twice or
/// whose file declares another name; and what parsing throws, noting who lists the file.
/// `outlines`: as for `parseUnitFile`.
void loadUnits(Project& project, const ProjectFile& file, UnitOutlines* outlines);

}  // namespace Vesk
