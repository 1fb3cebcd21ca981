// Dependencies that a target names in texts: `@goals` with goals = ["lib", "tools::gen(src)"].
#pragma once

#include <string_view>

#include "editor/symbols.h"

namespace Vesk::editor {

/// Adds what the texts say that the block's macros list, as far as they are written in the block
/// itself and refer to no variable.
void addComputedDependencies(Block& block, std::string_view text, const SyntaxTree& tree);

}  // namespace Vesk::editor
