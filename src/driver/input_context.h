// Assembling the context that a target is built from.
//
// Its layers, lowest first: what its tool declares; the builtin variables, the profiles and the
// command line, as far as they assign; the parameters; the target's own assignments; and over it
// the appends of tool and project. A condition's assignments belong to the layer in which it is
// written. What refers to the outputs of dependencies waits until those are there.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "driver/moved_items.h"
#include "project/implicit_layers.h"
#include "tools/variable_table.h"
#include "types/model/target.h"

namespace Vesk {

/// Where the layers come from. All outlives the InputContext, and nothing in it is changed: what
/// is merged are copies.
struct ContextLayers {
    const AssignmentMap* toolSettings = nullptr;  ///< null while no tool is chosen
    const ImplicitLayers& project;
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

    /// Evaluates the conditions of the project and of the target, in this order, each seeing what
    /// those before it brought. Throws what resolving and merging throw, with notes.
    void evaluateConditions();

    /// Appends an output of a merged dependency; it waits when what is stored does not resolve yet.
    void appendOutput(Assignment output);

    /// After the dependencies: adds what had to wait, announcing each at trace level.
    void addWaiting();

    /// A context for choosing the tool: assembled without waiting, silent, conditions evaluated as
    /// far as they can be, hints replaced by their values.
    static std::shared_ptr<Context> forToolChoice(const std::shared_ptr<const Target>& target,
                                                  const std::string& displayName,
                                                  const ContextLayers& layers);

  private:
    enum class Waiting { allowed, no };

    /// A text's assignments, and what its conditions have made of them.
    struct Layer {
        std::shared_ptr<const Context> written;
        std::shared_ptr<Context> changed = nullptr;  ///< the variables that conditions brought

        const Assignment* find(std::string_view name) const;

        /// All that is written, or the variable of that name.
        template <class Use>
        void forEach(const CiString* only, Use use) const;
    };

    void place(const CiString* only);
    void placeUnder(const Assignment& assignment);
    void placeOver(const Assignment& assignment);
    void placeParameters(const CiString* only);
    void placeAgain(const CiString& name);
    bool isOver(const CiString& name) const;
    void evaluateConditions(Layer& layer, Context::Unresolvable unresolvable);
    void evaluateConditions(Context::Unresolvable unresolvable);
    void mergeBody(const Context& body, Layer& layer);
    bool refersToOutput(const Assignment& assignment) const;
    bool mergesOutputs() const;
    void mergeOutput(const Assignment& output);
    void addWaitingAssignment(const Assignment& assignment);

    ContextLayers layers_;
    Waiting waiting_ = Waiting::allowed;
    std::shared_ptr<TargetContext> context_;
    std::vector<Layer> project_;  ///< lowest first
    Layer own_;
    std::vector<Assignment> waitingAssignments_;
    std::vector<Assignment> waitingAppends_;
    std::vector<Assignment> waitingOutputs_;
    std::map<CiString, MovedItems, CiLess> movedItems_;  ///< by the names of merged lists
};

}  // namespace Vesk
