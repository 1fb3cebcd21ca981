// Assembling the context that a target is built from.
//
// Three layers: under the target lies what its tool declares and what its project holds for every
// target, as far as assigned; then come the target's own assignments; over it come the appends of
// tool and project. What refers to the outputs of dependencies waits until those are there.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "driver/moved_items.h"
#include "tools/variable_table.h"
#include "types/target.h"

namespace Vesk {

/// Where the layers come from. All outlives the InputContext.
struct ContextLayers {
    const AssignmentMap* toolSettings = nullptr;  ///< null while no tool is chosen
    const Context& implicit;
    std::vector<Assignment> parameters;  ///< bound to the values that the dependant passes
};

class InputContext {
  public:
    InputContext(std::shared_ptr<const Target> target, std::string displayName,
                 ContextLayers layers);

    TargetContext& context() noexcept { return *context_; }
    const std::shared_ptr<TargetContext>& shared() const noexcept { return context_; }

    /// Puts the layers together. Throws what merging throws, with notes.
    void assemble();

    /// Appends an output of a merged dependency; it waits when what is stored does not resolve yet.
    void appendOutput(Assignment output);

    /// After the dependencies: adds what had to wait, announcing each at trace level.
    void addWaiting();

    /// A context for choosing the tool: assembled without waiting, silent, conditions evaluated as
    /// far as they can be, hints replaced by their values.
    static std::shared_ptr<Context> trial(const std::shared_ptr<const Target>& target,
                                          const std::string& displayName,
                                          const ContextLayers& layers);

  private:
    enum class Waiting { allowed, no };

    void assembleLayers(Waiting waiting);
    void placeUnder(const Assignment& assignment, Waiting waiting);
    void placeOver(const Assignment& assignment, Waiting waiting);
    bool refersToOutput(const Assignment& assignment) const;
    bool mergesOutputs() const;
    void mergeOutput(Assignment output);
    void addWaitingAssignment(const Assignment& assignment);

    ContextLayers layers_;
    std::shared_ptr<TargetContext> context_;
    std::vector<Assignment> waitingAssignments_;
    std::vector<Assignment> waitingAppends_;
    std::vector<Assignment> waitingOutputs_;
    std::map<CiString, MovedItems, CiLess> movedItems_;  ///< by the names of merged lists
};

}  // namespace Vesk
