// The one layout of unit, project and registry files.
//
// Blanks and line ends are set; nothing else changes. Lines are at most kMaxWidth wide where a
// blank can be a line end. A block stays on one line if it was written so and fits; a list that
// begins a line behind its bracket keeps its lines. Single empty lines stay.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/syntax_tree.h"

namespace Vesk::editor {

inline constexpr std::size_t kMaxWidth = 100;  ///< columns, in code points
inline constexpr std::size_t kIndent = 4;

struct Formatted {
    std::string text;                 ///< empty when there are errors
    std::vector<SyntaxError> errors;  ///< for which the text cannot be laid out
};

/// The text in that layout, with the byte order mark and the kind of line ends that it had; where
/// both kinds occur, the more frequent. Throws VeskException, and gives nothing, if the result
/// would mean anything else: that is a fault of the layout.
Formatted formatText(std::string_view text, FileKind kind);

}  // namespace Vesk::editor
