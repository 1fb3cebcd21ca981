// A run as one page for a browser.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "report/history.h"
#include "report/run_record.h"

namespace Vesk::report {

/// The whole page; it needs nothing from elsewhere. `when`: seconds since 1970-01-01 UTC.
std::string htmlReport(const RunRecord& run, const std::vector<PastRun>& earlier,
                       std::int64_t when);

}  // namespace Vesk::report
