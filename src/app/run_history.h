// The file of earlier runs of a project.
#pragma once

#include <vector>

#include "app/settings.h"
#include "report/history.h"

namespace Vesk {

/// Those of the project that the settings lead to; none where there are none.
std::vector<report::PastRun> earlierRuns(const Settings& settings);

/// Adds a run to them, unless it was a dry one. A failure to is none of the build's.
void keepRun(const Settings& settings, report::PastRun run, std::vector<report::PastRun> earlier);

}  // namespace Vesk
