#include "types/context_template.h"

#include "types/context.h"

namespace Vesk {

Condition deepCopy(const Condition& condition) {
    Condition copy = condition;
    copy.left = condition.left ? deepCopy(*condition.left) : nullptr;
    copy.right = condition.right ? deepCopy(*condition.right) : nullptr;
    return copy;
}

void ContextTemplate::mergeInto(Context& context) const {
    for (const Assignment& assignment : assignments) {
        try {
            context.mergeAssignment(deepCopy(assignment));
        } catch (...) {
            rethrowWithNote("in variable '" + assignment.name.str() + "', line " +
                            std::to_string(assignment.line));
        }
    }
    for (const Condition& condition : conditions) {
        context.addCondition(deepCopy(condition));
    }
}

std::shared_ptr<Context> ContextTemplate::instantiate() const {
    auto context = std::make_shared<Context>();
    mergeInto(*context);
    return context;
}

}  // namespace Vesk
