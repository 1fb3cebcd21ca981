#include "driver/input_context.h"

#include <algorithm>
#include <optional>

#include "base/console.h"
#include "types/values/identifier_value.h"
#include "types/values/list_value.h"

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

const Assignment* InputContext::Layer::find(std::string_view name) const {
    const Assignment* fromCondition = changed ? changed->find(name) : nullptr;
    return fromCondition != nullptr ? fromCondition : written->find(name);
}

template <class Use>
void InputContext::Layer::forEach(const CiString* only, Use use) const {
    if (only == nullptr) {
        for (const auto& [name, assignment] : written->assignments()) {
            use(assignment);
        }
    } else if (const Assignment* assignment = find(*only)) {
        use(*assignment);
    }
}

InputContext::InputContext(std::shared_ptr<const Target> target, std::string displayName,
                           ContextLayers layers)
    : layers_(std::move(layers)), own_{target->context()} {
    context_ = std::make_shared<TargetContext>(std::move(target), std::move(displayName));
    for (const std::shared_ptr<const Context>& layer : layers_.project) {
        project_.push_back({layer});
    }
}

/// Whether the value is a reference to something that no layer has: it can only be an output of a
/// dependency.
bool InputContext::refersToOutput(const Assignment& assignment) const {
    const VeskIdentifier* identifier = identifierOf(assignment.value);
    if (identifier == nullptr) {
        return false;
    }
    const CiString name = identifier->path.segments.front().name;
    const auto has = [&name](const Layer& layer) { return layer.find(name) != nullptr; };
    return !has(own_) && std::ranges::none_of(project_, has) &&
           (layers_.toolSettings == nullptr || layers_.toolSettings->count(name) == 0) &&
           std::ranges::none_of(layers_.parameters, [&name](const Assignment& parameter) {
               return parameter.name == name;
           });
}

bool InputContext::mergesOutputs() const {
    const auto& dependencies = context_->target().dependencies();
    return std::any_of(dependencies.begin(), dependencies.end(),
                       [](const DependencyRecord& record) { return record.merge; });
}

/// Whether the project's layers only append to the variable: then they reach every target, whatever
/// it assigns itself.
bool InputContext::isOver(const CiString& name) const {
    std::optional<AssignOperator> op;
    for (const Layer& layer : project_) {
        const Assignment* assignment = layer.find(name);
        if (assignment != nullptr && (!op || assignment->op == AssignOperator::Assign ||
                                      assignment->op == AssignOperator::None)) {
            op = assignment->op;
        }
    }
    return op == AssignOperator::Append;
}

void InputContext::placeUnder(const Assignment& assignment) {
    if (waiting_ == Waiting::allowed && refersToOutput(assignment)) {
        waitingAssignments_.push_back(layerCopy(assignment));
    } else {
        context_->mergeAssignment(layerCopy(assignment), ModifierMode::Keep);
    }
}

void InputContext::placeOver(const Assignment& assignment) {
    const bool mayComeFromDependency =
        mergesOutputs() && context_->find(assignment.name) == nullptr;
    if (waiting_ == Waiting::allowed && (mayComeFromDependency || refersToOutput(assignment))) {
        waitingAppends_.push_back(layerCopy(assignment));
    } else {
        context_->mergeAssignment(layerCopy(assignment), ModifierMode::Keep);
    }
}

void InputContext::placeParameters(const CiString* only) {
    for (const Assignment& parameter : layers_.parameters) {
        if (only == nullptr || parameter.name == *only) {
            context_->erase(parameter.name.str());
            context_->addAssignment(deepCopy(parameter), ModifierMode::Copy);
        }
    }
}

/// Merges the layers in their order: all variables, or one of them.
void InputContext::place(const CiString* only) {
    std::vector<const Assignment*> over;
    const auto placeTool = [&](const Assignment& assignment) {
        if (assignment.op == AssignOperator::Append) {
            over.push_back(&assignment);
        } else {
            placeUnder(assignment);
        }
    };
    if (layers_.toolSettings != nullptr) {
        for (const auto& [name, assignment] : *layers_.toolSettings) {
            if (only == nullptr || name == *only) {
                placeTool(assignment);
            }
        }
    }
    const auto placeProject = [&](const Assignment& assignment) {
        if (assignment.op != AssignOperator::Assign && isOver(assignment.name)) {
            over.push_back(&assignment);
        } else {
            placeUnder(assignment);
        }
    };
    for (const Layer& layer : project_) {
        layer.forEach(only, placeProject);
    }
    placeParameters(only);
    own_.forEach(only, [&](const Assignment& assignment) {
        context_->mergeAssignment(deepCopy(assignment));
    });
    for (const Assignment* append : over) {
        placeOver(*append);
    }
}

void InputContext::placeAgain(const CiString& name) {
    const auto isNamed = [&name](const Assignment& assignment) { return assignment.name == name; };
    context_->erase(name.str());
    std::erase_if(waitingAssignments_, isNamed);
    std::erase_if(waitingAppends_, isNamed);
    place(&name);
}

void InputContext::assemble() {
    place(nullptr);
}

void InputContext::mergeBody(const Context& body, Layer& layer) {
    if (!layer.changed) {
        layer.changed = std::make_shared<Context>();
    }
    for (const auto& [name, assignment] : body.assignments()) {
        const Assignment* before =
            layer.changed->find(name) == nullptr ? layer.find(name) : nullptr;
        if (before != nullptr) {
            layer.changed->addAssignment(deepCopy(*before), ModifierMode::Copy);
        }
        try {
            layer.changed->addAssignment(assignment, ModifierMode::Keep);
            placeAgain(name);
        } catch (...) {
            rethrowWithNote(assignment.place, "in variable '" + name.str() + "'");
        }
    }
}

void InputContext::evaluateConditions(Layer& layer, Context::Unresolvable unresolvable) {
    std::vector<Condition> conditions = layer.written->conditions();
    // A body may bring further conditions: the size is read afresh.
    for (std::size_t i = 0; i < conditions.size(); ++i) {
        const Condition condition = deepCopy(conditions[i]);
        if (context_->conditionHolds(condition, unresolvable)) {
            const std::shared_ptr<Context> body = condition.body->instantiate();
            mergeBody(*body, layer);
            conditions.insert(conditions.end(), body->conditions().begin(),
                              body->conditions().end());
        }
    }
}

void InputContext::evaluateConditions(Context::Unresolvable unresolvable) {
    for (Layer& layer : project_) {
        evaluateConditions(layer, unresolvable);
    }
    evaluateConditions(own_, unresolvable);
}

void InputContext::evaluateConditions() {
    evaluateConditions(Context::Unresolvable::fails);
}

std::shared_ptr<Context> InputContext::forToolChoice(const std::shared_ptr<const Target>& target,
                                                     const std::string& displayName,
                                                     const ContextLayers& layers) {
    InputContext input(target, displayName, layers);
    input.waiting_ = Waiting::no;
    input.context_->setSilent();
    input.place(nullptr);
    input.evaluateConditions(Context::Unresolvable::isFalse);
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
        mergeOutput(output);
    }
}

/// In a list, an item that was moved into it before stands in its last place, as linkers need it.
/// Else it would double with every layer of dependencies.
void InputContext::mergeOutput(const Assignment& output) {
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

/// An assignment that lies under the target: the target's own value wins, its appends follow, those
/// behind a `?=` too, which has no effect then.
void InputContext::addWaitingAssignment(const Assignment& assignment) {
    const Assignment* own = context_->find(assignment.name);
    if (own == nullptr) {
        context_->mergeAssignment(assignment, ModifierMode::Keep);
        return;
    }
    const bool yields = own->op == AssignOperator::Append || own->op == AssignOperator::AssignEmpty;
    if (!yields || !own->value) {
        return;
    }
    Assignment under = assignment;
    under.value = context_->resolveIdentifier(identifierOf(assignment.value)->path)->deepCopy();
    under.modifier = own->modifier;
    const Assignment placed = *own;
    context_->addAssignment(under, ModifierMode::Copy);
    if (placed.op == AssignOperator::AssignEmpty) {
        if (const Assignment* written = own_.find(assignment.name)) {
            context_->mergeAssignment(deepCopy(*written));
        }
        return;
    }
    context_->addAssignment(placed, ModifierMode::Copy);
    context_->find(assignment.name)->exported = placed.exported;
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
        mergeOutput(output);
    }
}

}  // namespace Vesk
