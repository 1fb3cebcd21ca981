// A target whose recipes run while other targets are visited and built.
#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "driver/target_build.h"
#include "schedule/schedule.h"

namespace Vesk {

/// What all scheduled builds share.
struct SharedSchedule {
    const BuildSetting& setting;
    Schedule schedule;
    std::exception_ptr error;  ///< the first one that ends the build
    bool failed = false;       ///< something has
};

/// Its nodes: one for each recipe, or for a list of commands, which start together; one that
/// completes the target when all have been done, and all targets that it depends on; and one for
/// dependants' compilers to wait for, if there is anything to wait for.
class ScheduledBuild : public std::enable_shared_from_this<ScheduledBuild> {
  public:
    using Dependencies = std::vector<std::shared_ptr<ScheduledBuild>>;

    ScheduledBuild(SharedSchedule& shared, std::unique_ptr<TargetBuild> build,
                   Dependencies dependencies);

    /// Adds the nodes. Returns what is known of the result. Throws VeskException for a file that
    /// another target makes.
    TargetResult begin();

    bool finished() const noexcept { return build_ == nullptr; }
    bool failed() const noexcept { return finished() && !succeeded_; }
    const std::string& name() const noexcept { return seenAs_.target; }

    NodeId completion() const noexcept { return completion_; }

    /// After this node sources and headers of the target and of all below it are there.
    std::optional<NodeId> sources() const noexcept { return sources_; }

    bool stampKnown() const noexcept { return stampKnown_ || finished(); }
    const std::string& stamp() const noexcept { return stamp_; }

    /// Keeps in the cache what has run so far.
    void keepProgress();

  private:
    /// Recipes that run together.
    struct Batch {
        std::vector<std::size_t> recipes;
        std::vector<std::size_t> stale;
        std::unique_ptr<Stage> stage;
    };

    void addStages();
    bool isKept(std::size_t number);
    bool sourcesAreMissing() const;
    void addBatch(std::vector<std::size_t> recipes, std::vector<NodeId> after);
    void addCompletion();
    void addSources();
    NodeId join(std::vector<NodeId> nodes);
    std::vector<NodeId> unfinishedDependencies() const;
    void waitForSources(std::vector<NodeId>& after);
    double guessFor(const std::vector<std::size_t>& batch) const;

    Turn ask(Batch& batch);
    bool ended(Batch& batch, NodeEnd end);
    bool completed(NodeEnd end);
    void tellWhyNot() const;
    void takeFailure();

    SharedSchedule& shared_;
    std::unique_ptr<TargetBuild> build_;  ///< null when it is finished
    Dependencies dependencies_;
    events::Subject seenAs_;
    std::string stamp_;
    bool isList_;
    bool stampKnown_ = false;
    bool succeeded_ = false;
    bool ownFailure_ = false;
    bool ran_ = false;   ///< something has run
    bool news_ = false;  ///< something has run since progress was kept
    std::vector<NodeId> recipeNodes_;
    std::vector<NodeId> sourceNodes_;
    std::optional<NodeId> sourcesBelow_;
    NodeId completion_ = 0;
    std::optional<NodeId> sources_;
};

}  // namespace Vesk
