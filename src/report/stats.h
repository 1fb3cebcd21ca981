// A run in about twenty lines.
#pragma once

#include <string>
#include <vector>

#include "report/history.h"
#include "report/run_record.h"

namespace Vesk::report {

/// Lines for a reader. `earlier`: the runs before this one, the oldest first.
std::vector<std::string> statsLines(const RunRecord& run, const std::vector<PastRun>& earlier);

/// The same and more for programs, see docs/see-the-build.md.
std::string statsJson(const RunRecord& run, const std::vector<PastRun>& earlier);

/// "83 ms", "4.21 s", "1:23".
std::string durationText(double seconds);

/// "640 kB", "1.2 GB".
std::string bytesText(std::uint64_t bytes);

/// "main::app out/app": whose command it is and what it makes, relative to the directory of the
/// run. A command that declares no files stands for itself.
std::string labelOf(const RunRecord& run, std::size_t command);

/// A path as it is seen from the directory of the run, if it lies there.
std::string fromDirectory(const RunRecord& run, const std::string& path);

}  // namespace Vesk::report
