#include "driver/mentions.h"

#include <algorithm>

#include "base/ci_string.h"
#include "base/text.h"

namespace Vesk {
namespace {

bool mentions(std::string_view text, std::string_view name) {
    return std::ranges::search(text, name, {}, asciiLower, asciiLower).begin() != text.end();
}

bool mentions(const ValuePtr& value, std::string_view name) {
    return value && mentions(value->toDisplayString(), name);
}

bool mentions(const ContextTemplate& body, std::string_view name);

bool mentions(const std::vector<Condition>& conditions, std::string_view name) {
    return std::ranges::any_of(conditions, [name](const Condition& condition) {
        return mentions(condition.left, name) || mentions(condition.right, name) ||
               (condition.body && mentions(*condition.body, name));
    });
}

bool mentions(const ContextTemplate& body, std::string_view name) {
    return std::ranges::any_of(
               body.assignments,
               [name](const Assignment& assignment) { return mentions(assignment.value, name); }) ||
           mentions(body.conditions, name);
}

bool mentions(const DependencyRecord& dependency, std::string_view name) {
    return mentions(dependency.macro.toDisplayString(), name) ||
           std::ranges::any_of(dependency.parameters, [name](const IdentifierPath& parameter) {
               return mentions(parameter.toDisplayString(), name);
           });
}

}  // namespace

bool mentions(const Context& context, std::string_view name) {
    return std::ranges::any_of(
               context.assignments(),
               [name](const auto& entry) { return mentions(entry.second.value, name); }) ||
           mentions(context.conditions(), name);
}

bool mentions(const Target& target, std::string_view name) {
    return mentions(target.body(), name) ||
           std::ranges::any_of(target.dependencies(), [name](const DependencyRecord& dependency) {
               return mentions(dependency, name);
           });
}

}  // namespace Vesk
