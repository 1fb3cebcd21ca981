// Answers with something for every target of a document. They are written as text: a tree of JSON
// that is only to be printed would take most of the time.
#pragma once

#include <string>

#include "editor/features/outline.h"
#include "editor/protocol/state.h"

namespace Vesk::editor {

/// Both return text of JSON, and throw what State::documentOf throws.
std::string documentSymbols(State& state, const Json& params);
std::string codeLenses(State& state, const Json& params);

/// As the protocol has it: a target is a function, a unit a module, ...
int symbolKind(OutlineKind kind) noexcept;

}  // namespace Vesk::editor
