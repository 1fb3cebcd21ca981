// Targets side by side: what visits leave to be done while the next ones go on.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "driver/scheduled_build.h"

namespace Vesk {

/// Used on the driver's thread. What throws BuildFailed does so when something has failed and the
/// user does not want to go on.
class SideBySide {
  public:
    explicit SideBySide(const BuildSetting& setting);

    /// Waits until a target's recipes can be made: for what its builder looks for, and, if it may
    /// not overlap with others, for everything. Throws BuildFailed.
    void waitForRecipes(const Builder& builder, const TargetContext& context,
                        const ScheduledBuild::Dependencies& dependencies);

    /// Waits until nothing is left to be made, unless the target may be built while others are.
    /// Throws BuildFailed.
    void waitUnlessOverlapping(bool overlaps);

    /// Whether the target may be built while others are.
    static bool mayOverlap(const Builder& builder, const TargetContext& context);

    /// Whether a dependency that is being built tells its dependants more than they know already:
    /// its sources are not there yet, or nobody knows how they see that it was built.
    bool isOpen(const ScheduledBuild& dependency) const;

    /// Whether a recipe that has not ended makes the file.
    bool isToBeMade(const std::string& file) const {
        return shared_.schedule.makerOf(file).has_value();
    }

    /// Waits until it is known how dependants see that the target was built. Throws BuildFailed,
    /// also when that one has failed.
    void waitForStamp(const ScheduledBuild& dependency);

    /// Takes what the cache has, leaves the recipes to the schedule, or builds the target here and
    /// now; one that stands is scheduled behind its dependencies. Throws what building throws.
    TargetResult build(std::unique_ptr<TargetBuild> build,
                       ScheduledBuild::Dependencies dependencies);

    /// Whether something has failed.
    bool hasFailed() const noexcept { return shared_.failed; }

    /// Begins what can be begun. Throws BuildFailed, Interrupted, and what building has thrown.
    void advance();

    /// Waits until all is done. Throws as `advance`; with "keep going" failures are left to
    /// `ScheduledBuild::failed`.
    void finish();

    /// When the build ends early: waits for what runs and keeps its results, begins nothing.
    void abandon();

  private:
    bool waitsForOthers(TargetBuild& build, const ScheduledBuild::Dependencies& dependencies) const;
    void waitForAll();
    void waitFor(NodeId node);
    void waitForRecord(const BuildSubject& subject);
    [[noreturn]] void throwFailure();
    void keepProgress();

    SharedSchedule shared_;

    /// By cache and key: two visits may share a record.
    std::map<std::pair<const ProjectCache*, std::string>, std::weak_ptr<ScheduledBuild>> builds_;
};

}  // namespace Vesk
