// A run as it was: what its events tell, put together.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "events/event.h"

namespace Vesk::report {

/// A stretch of time within the run.
struct Stretch {
    events::Time began{0};
    events::Time ended{0};

    events::Time length() const noexcept { return ended - began; }
};

struct CommandRecord : Stretch {
    std::size_t visit = 0;  ///< its place among the visits
    events::Id step = 0;    ///< see events::CommandStarted
    unsigned stage = 0;
    unsigned lane = 0;
    std::string command;
    std::string makes;  ///< see events::CommandStarted
    std::string output;
    std::int32_t status = 0;
    bool finished = false;
    platform::ProcessUsage usage;

    bool failed() const noexcept { return finished && status != 0; }
};

struct VisitRecord : Stretch {
    events::VisitStarted about;
    std::string tool;
    bool kept = false;
    events::Outcome outcome = events::Outcome::NotBegun;
    std::string said;  ///< see events::TargetFinished
    std::size_t keptSteps = 0;
    double keptSeconds = 0;
    std::vector<std::size_t> needs;  ///< other visits
    std::vector<std::size_t> commands;
    std::vector<events::ReasonFound> reasons;

    const std::string& name() const noexcept { return about.subject.target; }
};

struct ActivityRecord : Stretch {
    events::Activity activity = events::Activity::Read;
    std::string name;
};

struct RunRecord {
    events::RunStarted about;
    events::RunOutcome outcome = events::RunOutcome::Done;
    bool repeated = false;  ///< an earlier run was; then there are no visits
    events::Time ended{0};  ///< since the program began
    std::vector<VisitRecord>
        visits;  ///< in the order in which they began; the first is the request
    std::vector<CommandRecord> commands;  ///< likewise
    std::vector<ActivityRecord> activities;
};

inline double seconds(events::Time time) noexcept {
    return std::chrono::duration<double>(time).count();
}

}  // namespace Vesk::report
