// Reading the unit files that a project file lists.
#pragma once

#include "grammar/model.h"
#include "project/project.h"

namespace Vesk {

/// Reads every listed unit and adds it to the project, in the file's order; each file once. Throws
/// VeskException for a project without units, a unit without files, a unit that is listed twice or
/// whose file declares another name; and what parsing throws, noting who lists the file.
void loadUnits(Project& project, const ProjectFile& file);

}  // namespace Vesk
