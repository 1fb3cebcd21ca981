// Puts the record of a run together.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>

#include "events/events.h"
#include "report/run_record.h"

namespace Vesk::report {

class RunRecorder : public events::Listener {
  public:
    /// Of what a command writes so many bytes are kept, and so many of all commands.
    static constexpr std::size_t kMostOutput = std::size_t{32} * 1024;
    static constexpr std::size_t kMostOutputs = std::size_t{8} * 1024 * 1024;

    void take(events::Time at, const events::Event& event) noexcept override;

    /// After the run.
    RunRecord finished() { return std::move(record_); }

  private:
    void add(events::Time at, const events::RunStarted& event);
    void add(events::Time at, const events::ActivityStarted& event);
    void add(events::Time at, const events::ActivityFinished& event);
    void add(events::Time at, const events::VisitStarted& event);
    void add(events::Time at, const events::VisitFinished& event);
    void add(events::Time at, const events::Needed& event);
    void add(events::Time at, const events::ReasonFound& event);
    void add(events::Time at, const events::CommandStarted& event);
    void add(events::Time at, const events::Output& event);
    void add(events::Time at, const events::CommandFinished& event);
    void add(events::Time at, const events::TargetFinished& event);
    void add(events::Time at, const events::RunRepeated& event);
    void add(events::Time at, const events::RunFinished& event);

    /// Null for a number that was never told of.
    VisitRecord* visit(events::Id id);
    CommandRecord* command(events::Id id);

    RunRecord record_;
    std::unordered_map<events::Id, std::size_t> places_;  ///< in the vector of their kind
    std::size_t outputs_ = 0;
};

}  // namespace Vesk::report
