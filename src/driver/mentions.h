// Where variables are referred to, as far as texts show it.
//
// A text that holds a name may mean something else by it: there are rather too many mentions than
// too few, since what is concluded from none has to be right.
#pragma once

#include <string_view>

#include "types/context/context.h"
#include "types/model/target.h"

namespace Vesk {

/// Whether a value or a condition of the context names the variable, in any case of letters.
bool mentions(const Context& context, std::string_view name);

/// The same for the target's text with its dependencies.
bool mentions(const Target& target, std::string_view name);

}  // namespace Vesk
