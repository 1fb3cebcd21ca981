// Earlier runs, to compare with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "report/run_record.h"

namespace Vesk::report {

/// Next to the cache of the project.
inline constexpr const char* kHistoryFileName = ".vesk_cache.runs";

/// So many are kept, the last ones.
inline constexpr std::size_t kMostRuns = 20;

/// A run in few words.
struct PastRun {
    struct Step {
        std::string target;
        std::string makes;
        double seconds = 0;
    };

    std::int64_t when = 0;  ///< seconds since 1970-01-01 UTC
    double seconds = 0;
    std::string target;
    std::string profile;
    std::string outcome;
    unsigned jobs = 1;
    std::size_t built = 0;
    std::size_t fresh = 0;
    std::size_t failed = 0;
    std::size_t commands = 0;
    double commandSeconds = 0;
    std::vector<Step> slowest;
};

PastRun summaryOf(const RunRecord& run, std::int64_t when);

/// What a file of runs holds, the oldest first; none for a text that is no such file.
std::vector<PastRun> runsIn(std::string_view text);

/// The text of the file; of more runs than are kept the last ones.
std::string historyText(const std::vector<PastRun>& runs);

/// The last of them that had the same request; null: none.
const PastRun* lastLike(const PastRun& run, const std::vector<PastRun>& runs);

}  // namespace Vesk::report
