#include "types/context/context_template.h"

#include "types/context/context.h"
#include "types/values/identifier_value.h"

namespace Vesk {
namespace {

bool isReference(const ValuePtr& value) {
    return valueAs<VeskIdentifier>(value.get()) != nullptr;
}

}  // namespace

void fill(Context& context, const Assignment& assignment) {
    try {
        context.addAssignment(deepCopy(assignment), writtenMode(assignment));
    } catch (VeskException& error) {
        const Assignment* stored = context.find(assignment.name);
        const bool ofReference =
            isReference(assignment.value) || (stored != nullptr && isReference(stored->value));
        if (assignment.op == AssignOperator::Append && ofReference) {
            error.addNote(
                "a reference can be appended to a list, as in x = [a] x += b, and a text can hold "
                "one, as in x += \"${b}\"");
        }
        error.addPlace(assignment.place);
        error.addNote("in variable '" + assignment.name.str() + "'");
        throw;
    }
}

Condition deepCopy(const Condition& condition) {
    Condition copy = condition;
    copy.left = condition.left ? condition.left->deepCopy() : nullptr;
    copy.right = condition.right ? condition.right->deepCopy() : nullptr;
    return copy;
}

std::shared_ptr<Context> ContextTemplate::instantiate() const {
    auto context = std::make_shared<Context>();
    for (const Assignment& assignment : assignments) {
        fill(*context, assignment);
    }
    for (const Condition& condition : conditions) {
        context->addCondition(deepCopy(condition));
    }
    return context;
}

}  // namespace Vesk
