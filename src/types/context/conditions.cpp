// Conditional blocks of contexts.

#include "base/attempt.h"
#include "types/context/context.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

constexpr int kUnknownOperatorLine = 529;

ValuePtr resolvedOperand(const ValuePtr& operand, Context& context) {
    Resolvable* resolvable = resolvableOf(operand);
    if (resolvable == nullptr) {
        return operand;
    }
    resolvable->setResolver(&context);
    return resolvable->resolve();
}

bool compare(const Condition& condition, Context& context) {
    const ValuePtr left = resolvedOperand(condition.left, context);
    const ValuePtr right = resolvedOperand(condition.right, context);
    switch (condition.op) {
        case ConditionOperator::Equal:
            return left->equals(*right);
        case ConditionOperator::NotEqual:
            return left->notEquals(*right);
        case ConditionOperator::Less:
            return left->lessThan(*right);
        case ConditionOperator::Greater:
            return left->greaterThan(*right);
        case ConditionOperator::Exists:
            break;
    }
    throw InternalError(kContextSourceUnit, kUnknownOperatorLine,
                        "void __cdecl Vesk::Context::evaluateConditions(void)");
}

}  // namespace

bool Context::conditionHolds(const Condition& condition, Unresolvable unresolvable) {
    if (condition.op == ConditionOperator::Exists) {
        return succeeds([&] { resolvedOperand(condition.left, *this); });
    }
    if (unresolvable == Unresolvable::isFalse) {
        bool holds = false;
        return succeeds([&] { holds = compare(condition, *this); }) && holds;
    }
    try {
        return compare(condition, *this);
    } catch (...) {
        rethrowWithNote(condition.place, "in a condition");
    }
}

void Context::evaluateConditions(Unresolvable unresolvable) {
    // A body may add further conditions, so the size is read in each round.
    for (std::size_t i = 0; i < conditions_.size(); ++i) {
        const Condition condition = conditions_[i];
        if (conditionHolds(condition, unresolvable)) {
            const std::shared_ptr<Context> body = condition.body->instantiate();
            for (const auto& [name, assignment] : body->assignments()) {
                addAssignment(assignment, ModifierMode::Keep);
            }
            conditions_.insert(conditions_.end(), body->conditions_.begin(),
                               body->conditions_.end());
        }
    }
    conditions_.clear();
}

}  // namespace Vesk
