// Handing the outputs of a dependency to its dependant.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "base/ci_string.h"
#include "driver/input_context.h"
#include "types/model/dependency.h"

namespace Vesk {

/// A dependency that has been visited.
struct DependencyOutput {
    const DependencyRecord& record;
    std::string unit;
    std::string target;
    bool sameUnit = true;  ///< then it is seen as target.VARIABLE, else as unit.target.VARIABLE
    std::shared_ptr<Context> outputs;
};

/// Puts outputs into one dependant's input context, and remembers which names they took: a name
/// that another dependency brought is no variable of the dependant's own.
class DependencyOutputs {
  public:
    explicit DependencyOutputs(InputContext& input) : input_(input) {}

    /// Adds the outputs as a nested context, under the alias or the dependency's own name, and for
    /// a dependency with "+" into the dependant's own variables too. Collisions are warned about.
    void add(const DependencyOutput& visited);

  private:
    void warnOfAlias(const std::string& alias) const;
    void addUnderAlias(const DependencyOutput& dependency);
    void addToSharedAlias(const DependencyOutput& dependency);
    void addUnderOwnName(const DependencyOutput& dependency);
    std::shared_ptr<Context> unitContext(const DependencyOutput& dependency);
    void mergeOutputs(const DependencyOutput& dependency);
    void assignOutput(const Assignment& moved);
    void store(const std::string& name, const std::shared_ptr<Context>& outputs);

    InputContext& input_;
    std::set<CiString, CiLess> placed_;  ///< names that dependencies brought
    std::set<CiString, CiLess> shared_;  ///< aliases under which outputs are collected
};

}  // namespace Vesk
