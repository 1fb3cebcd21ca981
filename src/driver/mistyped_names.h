// Variables whose names were probably meant to be others.
#pragma once

#include "driver/tool_choice.h"
#include "types/model/target.h"

namespace Vesk {

/// Warns of each variable of the target that has no effect, since its tool does not look at it,
/// nothing in the context refers to it and it is no output, but that is nearly called like one at
/// which the tool looks. `context` is the target's input context, its variables not yet resolved.
void warnOfMistypedNames(const Target& target, const Context& context, const ToolChoice& choice);

/// "" or "'C_FILE' (did you mean 'C_FILES'?)" for the first variable that is nearly called like one
/// of those by which targets say what they are built with. For a target that fits no tool.
std::string mistypedSource(const Context& context);

}  // namespace Vesk
