#include "driver/input_context.h"

#include <algorithm>

#include "base/console.h"
#include "types/identifier_value.h"
#include "types/list_value.h"

namespace Vesk {
namespace {

const VeskIdentifier* identifierOf(const ValuePtr& value) {
    return valueAs<VeskIdentifier>(value.get());
}

/// A copy for the target's context. That a value satisfies a need of its tool matters to the tool
/// only.
Assignment layerCopy(const Assignment& assignment) {
    Assignment copy = deepCopy(assignment);
    if (copy.modifier == AssignModifier::Must) {
        copy.modifier = AssignModifier::None;
    }
    return copy;
}

}  // namespace

InputContext::InputContext(std::shared_ptr<const Target> target, std::string displayName,
                           ContextLayers layers)
    : layers_(std::move(layers)),
      context_(std::make_shared<TargetContext>(std::move(target), std::move(displayName))) {}

/// Whether the value is a reference to something that no layer has: it can only be an output of a
/// dependency.
bool InputContext::refersToOutput(const Assignment& assignment) const {
    const VeskIdentifier* identifier = identifierOf(assignment.value);
    if (identifier == nullptr) {
        return false;
    }
    const CiString name = identifier->path.segments.front().name;
    const auto& own = context_->target().body.assignments;
    const auto isNamed = [&name](const Assignment& candidate) { return candidate.name == name; };
    return layers_.implicit.find(name) == nullptr &&
           (layers_.toolSettings == nullptr || layers_.toolSettings->count(name) == 0) &&
           std::none_of(own.begin(), own.end(), isNamed) &&
           std::none_of(layers_.parameters.begin(), layers_.parameters.end(), isNamed);
}

bool InputContext::mergesOutputs() const {
    const auto& dependencies = context_->target().dependencies;
    return std::any_of(dependencies.begin(), dependencies.end(),
                       [](const DependencyRecord& record) { return record.merge; });
}

void InputContext::placeUnder(const Assignment& assignment, Waiting waiting) {
    if (waiting == Waiting::allowed && refersToOutput(assignment)) {
        waitingAssignments_.push_back(layerCopy(assignment));
    } else {
        context_->mergeAssignment(layerCopy(assignment), ModifierMode::Keep);
    }
}

void InputContext::placeOver(const Assignment& assignment, Waiting waiting) {
    const bool mayComeFromDependency =
        mergesOutputs() && context_->find(assignment.name) == nullptr;
    if (waiting == Waiting::allowed && (mayComeFromDependency || refersToOutput(assignment))) {
        waitingAppends_.push_back(layerCopy(assignment));
    } else {
        context_->mergeAssignment(layerCopy(assignment), ModifierMode::Keep);
    }
}

void InputContext::assembleLayers(Waiting waiting) {
    std::vector<const Assignment*> appends;
    const auto addLayer = [&](const AssignmentMap& layer) {
        for (const auto& [name, assignment] : layer) {
            if (assignment.op == AssignOperator::Append) {
                appends.push_back(&assignment);
            } else {
                placeUnder(assignment, waiting);
            }
        }
    };
    if (layers_.toolSettings != nullptr) {
        addLayer(*layers_.toolSettings);
    }
    addLayer(layers_.implicit.assignments());
    for (const Assignment& parameter : layers_.parameters) {
        context_->addAssignment(parameter, ModifierMode::Keep);
    }
    for (const Condition& condition : layers_.implicit.conditions()) {
        context_->addCondition(deepCopy(condition));
    }
    context_->target().body.mergeInto(*context_);
    for (const Assignment* append : appends) {
        placeOver(*append, waiting);
    }
    for (const Assignment& append : layers_.implicit.heldAppends()) {
        placeOver(append, waiting);
    }
}

void InputContext::assemble() {
    assembleLayers(Waiting::allowed);
}

std::shared_ptr<Context> InputContext::trial(const std::shared_ptr<const Target>& target,
                                             const std::string& displayName,
                                             const ContextLayers& layers) {
    InputContext input(target, displayName, layers);
    input.context_->setSilent();
    input.assembleLayers(Waiting::no);
    input.context_->evaluateConditions(Context::Unresolvable::isFalse);
    input.context_->placeHeldAppends();
    input.context_->resolveHints();
    return input.context_;
}

void InputContext::appendOutput(Assignment output) {
    const Assignment* stored = context_->find(output.name);
    const bool unresolved = stored != nullptr && identifierOf(stored->value) != nullptr;
    if (unresolved || context_->hasHeldAppends(output.name)) {
        waitingOutputs_.push_back(std::move(output));
    } else {
        mergeOutput(std::move(output));
    }
}

/// In a list, an item that was moved into it before stands in its last place, as linkers need it.
/// Else it would double with every layer of dependencies.
void InputContext::mergeOutput(Assignment output) {
    if (auto* list = valueAs<VeskList>(output.value.get())) {
        MovedItems& moved = movedItems_[output.name];
        moved.add(*list);
        if (Assignment* stored = context_->find(output.name); stored != nullptr) {
            for (const ValuePtr& value : {stored->value, stored->exported}) {
                if (auto* items = valueAs<VeskList>(value.get())) {
                    moved.removeRepeated(*items);
                }
            }
        }
    }
    context_->mergeAssignment(output);
}

/// An assignment that lies under the target: the target's own value wins, its appends follow.
void InputContext::addWaitingAssignment(const Assignment& assignment) {
    const Assignment* own = context_->find(assignment.name);
    if (own == nullptr) {
        context_->mergeAssignment(assignment, ModifierMode::Keep);
        return;
    }
    if (own->op != AssignOperator::Append || !own->value) {
        return;
    }
    Assignment under = assignment;
    under.value = context_->resolveIdentifier(identifierOf(assignment.value)->path)->clone();
    under.modifier = own->modifier;
    const Assignment appended = *own;
    context_->addAssignment(under, ModifierMode::Copy);
    context_->addAssignment(appended, ModifierMode::Copy);
    context_->find(assignment.name)->exported = appended.exported;
}

void InputContext::addWaiting() {
    for (const Assignment& assignment : waitingAssignments_) {
        console::trace("Second try adding implicit assignment {}.", assignment.toDisplayString());
        addWaitingAssignment(assignment);
    }
    for (const Assignment& append : waitingAppends_) {
        console::trace("Second try adding implicit append {}.", append.toDisplayString());
        context_->mergeAssignment(append, ModifierMode::Keep);
    }
    context_->placeHeldAppends();
    for (Assignment& output : waitingOutputs_) {
        console::trace("Second try adding merged dependency output append {}.",
                       output.toDisplayString());
        mergeOutput(std::move(output));
    }
}

}  // namespace Vesk
