// A run in the trace event format, which Perfetto and chrome://tracing show.
//
// Described in "Trace Event Format" by the authors of chrome://tracing. The times are microseconds.
#pragma once

#include <string>

#include "report/run_record.h"

namespace Vesk::report {

/// One lane shows what vesk itself does: reading, visits, cache; one more each worker's commands.
std::string traceOf(const RunRecord& run);

}  // namespace Vesk::report
