// What is told about a name.
#pragma once

#include <string>

#include "editor/evaluation.h"
#include "editor/features/entity.h"
#include "tools/variables.h"

namespace Vesk::editor {

struct Hover {
    std::string markdown;  ///< empty: there is nothing to tell
    TextSpan span;
};

/// A variable with its meaning, the value that it has under the selected profile and where that
/// comes from; a target with what it is built with and what it needs.
Hover hoverAt(const Cursor& cursor, Evaluations& evaluations);

/// A variable as its table has it: type, meaning, default, example.
std::string describe(const Variable& variable, VariableRole role);

}  // namespace Vesk::editor
