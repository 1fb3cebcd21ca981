// What a target, a profile or the project says about how targets are built, by yes or no.
#pragma once

#include <string_view>

#include "types/context/context.h"

namespace Vesk {

/// The commands run in every build that asks for the target.
inline constexpr std::string_view kAlwaysVariable = "ALWAYS";

/// A target of the static tools may be built while others are.
inline constexpr std::string_view kSideBySideVariable = "SIDE_BY_SIDE";

/// Whether the context says "yes" (in any letter case) in this variable. Throws VeskException for
/// what is neither yes nor no.
bool saysYes(const Context& context, std::string_view variable);

}  // namespace Vesk
