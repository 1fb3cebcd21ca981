// Making the record of a build.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cache/freshness.h"

namespace Vesk {

/// What became of a recipe in a build.
enum class StepOutcome : char {
    Pending,  ///< it did not run, or did not succeed
    Kept,     ///< its earlier result still stands
    Ran,
};

/// What a build adds to its request.
struct BuildResults {
    std::vector<StepOutcome> outcomes;  ///< of all parts of the request; the first two are not used
    std::vector<double> seconds;        ///< of each that ran; empty or 0: not known
    std::vector<Assignment> outputs;    ///< that were not known before the commands ran
    std::string stamp;
    std::int64_t startedAt = 0;  ///< of platform::fileClock, before the first command
    bool finished = true;        ///< else what is Pending is left out and the record is no hit
};

/// The record to keep. `last` is what the build was compared with. `missing`, when given, gets the
/// outputs that should be there and are not. Nothing for outputs that cannot be stored.
std::optional<RecordText> makeRecord(const CacheRequest& request, const BuildResults& results,
                                     const Freshness& last, FileStates& states,
                                     const TrackingRoot& root,
                                     std::vector<std::string>* missing = nullptr);

/// The files that a build's record will need to have read, for FileStates::readAhead.
std::vector<std::string> filesToRead(const CacheRequest& request,
                                     const std::vector<StepOutcome>& outcomes);

}  // namespace Vesk
