#include "driver/target_environment.h"

#include "types/context/context_value.h"

namespace Vesk {

const Context* environmentOf(const Context& target) {
    const Assignment* variables = target.find(kEnvironmentVariable);
    const auto* nested =
        variables != nullptr ? valueAs<VeskContext>(variables->value.get()) : nullptr;
    return nested != nullptr ? nested->context().get() : nullptr;
}

std::vector<EnvironmentVariable> environmentVariables(const Context& target) {
    std::vector<EnvironmentVariable> variables;
    if (const Context* environment = environmentOf(target)) {
        for (const auto& [name, assignment] : environment->assignments()) {
            variables.push_back({name.str(), assignment.value ? assignment.value->toString() : ""});
        }
    }
    return variables;
}

}  // namespace Vesk
