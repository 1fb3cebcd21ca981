// The targets of a run and what they need of one another, as a graph.
#pragma once

#include <string>

#include "report/run_record.h"

namespace Vesk::report {

/// For Graphviz: a box of boxes for each project, with its profile.
std::string graphAsDot(const RunRecord& run);

/// For programs, see docs/see-the-build.md.
std::string graphAsJson(const RunRecord& run);

}  // namespace Vesk::report
