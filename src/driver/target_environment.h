// The process environment of a target's commands, as the target gives it.
#pragma once

#include <string>
#include <vector>

#include "types/context/context.h"

namespace Vesk {

/// A nested context of this name holds it.
inline constexpr const char* kEnvironmentVariable = "ENV";

/// Null for a target that sets none.
const Context* environmentOf(const Context& target);

struct EnvironmentVariable {
    std::string name;
    std::string value;
};

/// What the target sets, in the order of the names.
std::vector<EnvironmentVariable> environmentVariables(const Context& target);

}  // namespace Vesk
