// Makes the record of a build.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cache/freshness.h"

namespace Vesk {

/// The outcome of a recipe in a build.
enum class StepOutcome : char {
    Pending,  ///< it did not run, or did not succeed
    Kept,     ///< its earlier result still stands
    Ran,
};

/// What a build adds to its request.
struct BuildResults {
    std::vector<StepOutcome> outcomes;  ///< for all parts of the request; the first two are unused
    std::vector<double> seconds;        ///< for each that ran; empty or 0 if not known
    std::vector<Assignment> outputs;    ///< those not known before the commands ran
    std::string stamp;
    std::int64_t startedAt = 0;  ///< of platform::fileClock, before the first command
    bool finished = true;        ///< if not, what is Pending is left out and the record is no hit
};

/// The record to keep. `last` is what the build was compared with. `missing`, if given, receives
/// the outputs that should exist but do not. Nothing if some output cannot be stored.
std::optional<RecordText> makeRecord(const CacheRequest& request, const BuildResults& results,
                                     const Freshness& last, FileStates& states,
                                     const TrackingRoot& root,
                                     std::vector<std::string>* missing = nullptr);

/// The files that a build's record will have to read, for FileStates::readAhead.
std::vector<std::string> filesToRead(const CacheRequest& request,
                                     const std::vector<StepOutcome>& outcomes);

}  // namespace Vesk
