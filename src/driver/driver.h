// Builds a target and all that it depends on.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "driver/build_setting.h"
#include "driver/target_visit.h"
#include "types/context/context.h"

namespace Vesk {

/// One target may be visited this often on one way down, each time with other arguments. Chains of
/// distinct targets have no limit.
inline constexpr std::size_t kMaxVisitsOnWay = 1000;

/// Visits targets one at a time, dependencies before their dependants, on the calling thread. Each
/// target is visited once per build and arguments; its outputs are kept for every dependant. The
/// way down is kept on a stack of its own, so that a chain of any length can be built.
class Driver {
  public:
    explicit Driver(BuildSetting setting);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// Returns what the target gives to its dependants. Throws VeskException when it cannot be
    /// built, LoopFoundException for targets that need each other (nothing of the loop is built
    /// then), EndlessVisits for targets that do so with ever new arguments, Interrupted, and what
    /// contexts, tools and the file system throw.
    VisitOutputs build(const TargetLocation& location);

    /// Visits each target and builds all that it depends on, but not the target itself: that is the
    /// caller's, with TargetVisit::prepareBuild, while the driver lives. A dependant gets a target
    /// that it needs as ever. Null stands for one that cannot be built for what it depends on; with
    /// "keep going" messages have said why. Throws as `build`.
    std::vector<std::unique_ptr<TargetVisit>> visitOnly(
        const std::vector<TargetLocation>& locations);

  private:
    struct Visited {
        TargetResult result;
        bool finished = false;
        bool failed = false;
        events::Id visit = 0;
        VisitTree::Node inTree = 0;

        bool hasFailed() const noexcept {
            return failed || (result.scheduled && result.scheduled->failed());
        }

        std::vector<std::shared_ptr<Context>>
            arguments;  ///< contexts whose addresses are in the key
    };

    Visited& enter(const TargetLocation& location, std::vector<ValuePtr> arguments,
                   std::optional<StandingVisits::Node> expected);
    void visitNextDependency(TargetVisit& visit);
    std::optional<StandingVisits::Node> nextInEarlierRun(const TargetVisit& visit) const;
    std::optional<StandingVisits::Node> topInEarlierRun(
        std::optional<StandingVisits::Node> expected) const;
    bool passOverNext(TargetVisit& visit);
    bool passOverTop(Visited& visited, std::optional<StandingVisits::Node> earlier);
    bool isPassed(StandingVisits::Node visit);
    void step(TargetVisit& visit);
    void beginBuild();
    void visitAll();
    std::unique_ptr<TargetVisit> visitOnly(const TargetLocation& location);

    /// Does it; with "keep going" a failure is the top target's.
    template <class Action>
    void guarded(Action action);

    /// Does it, then finishes what runs side by side; after a failure that is abandoned.
    template <class Action>
    void orAbandon(Action action);

    void finishTop();
    void failTop();
    void addToTree(Visited& visited);
    void tellPassed() const;
    void reportFailure(const VeskException& error);
    void push(const TargetLocation& location, std::vector<ValuePtr> arguments, std::string key);
    void pop();
    [[noreturn]] void throwCycle(const std::string& key) const;
    [[noreturn]] void throwEndless(const Target& target) const;

    BuildSetting setting_;
    std::unique_ptr<SideBySide> others_;  ///< null: one target after the other
    std::vector<std::unique_ptr<TargetVisit>> stack_;
    std::unordered_map<const Target*, std::size_t> visitsOnWay_;  ///< of the targets on the stack
    std::unordered_map<std::string, Visited> visited_;
    std::unordered_map<std::string, std::string> firstWithout_;  ///< a toolchain, by the cause
};

}  // namespace Vesk
