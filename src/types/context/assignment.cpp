#include "types/context/assignment.h"

#include "types/values/string_values.h"

namespace Vesk {
namespace {

std::string_view displayText(AssignOperator op, bool hasValue) {
    if (op == AssignOperator::None) {
        return hasValue ? " : " : "";
    }
    return sourceText(op);
}

}  // namespace

std::string Assignment::toDisplayString() const {
    std::string text = name.str();
    text += displayText(op, value != nullptr);
    if (value) {
        text += value->toDisplayString();
    }
    return text;
}

Assignment resolvedAssignment(CiString name, ValuePtr value, AssignModifier modifier) {
    Assignment assignment;
    assignment.name = std::move(name);
    assignment.value = std::move(value);
    assignment.modifier = modifier;
    assignment.state = ResolveState::Resolved;
    return assignment;
}

Assignment textAssignment(CiString name, std::string text) {
    return resolvedAssignment(std::move(name), std::make_shared<VeskRawString>(std::move(text)));
}

Assignment deepCopy(const Assignment& assignment) {
    Assignment copy = assignment;
    copy.value = assignment.value ? assignment.value->deepCopy() : nullptr;
    copy.exported = assignment.exported ? assignment.exported->deepCopy() : nullptr;
    for (Assignment& part : copy.written) {
        part = deepCopy(part);
    }
    return copy;
}

}  // namespace Vesk
