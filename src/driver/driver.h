// Builds a target and all that it depends on.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "driver/build_setting.h"
#include "driver/target_visit.h"
#include "types/context.h"

namespace Vesk {

/// Visits targets one at a time, dependencies before their dependants, on the calling thread. Each
/// target is visited once per build and arguments; its outputs are kept for every dependant. The
/// way down is kept on a stack of its own, so that a chain of any length can be built.
class Driver {
  public:
    explicit Driver(BuildSetting setting);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// Returns the target's output context. Throws VeskException when it cannot be built,
    /// LoopFoundException for targets that need each other (nothing of the loop is built then),
    /// Interrupted, and what contexts, tools and the file system throw.
    std::shared_ptr<Context> build(const TargetLocation& location);

  private:
    struct Visited {
        TargetResult result;
        bool finished = false;
        bool failed = false;
        std::vector<std::shared_ptr<Context>>
            arguments;  ///< contexts whose addresses are in the key
    };

    Visited& enter(const TargetLocation& location, std::vector<ValuePtr> arguments);
    void visitNextDependency(TargetVisit& visit);
    void step(TargetVisit& visit);
    void finishTop();
    void failTop();
    [[noreturn]] void throwCycle(const std::string& key) const;

    BuildSetting setting_;
    std::vector<std::unique_ptr<TargetVisit>> stack_;
    std::unordered_map<std::string, Visited> visited_;
};

}  // namespace Vesk
