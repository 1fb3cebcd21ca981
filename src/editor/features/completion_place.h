// Where in the grammar a cursor stands, also in a text that is being typed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "editor/document.h"

namespace Vesk::editor {

enum class PlaceKind : std::uint8_t {
    Nothing,     ///< in a comment, or where only a new name can stand
    TopLevel,    ///< of a project file
    Dependency,  ///< in the head of a target
    Name,        ///< where an assignment or `if` begins
    Value,       ///< a name as a value, an argument or in a condition
    Reference,   ///< in "${...}"
    Text,        ///< in a string
    Path,        ///< in P"(...)"
    Import,      ///< in the section `import`
};

struct CompletionPlace {
    PlaceKind kind = PlaceKind::Nothing;
    std::string variable;  ///< the one that is given a value
    std::string before;    ///< what is written of the word, path or reference, up to the cursor
    TextSpan word;         ///< the part of it that is replaced, in the document
    std::string section;   ///< of a project file: "units"
};

CompletionPlace completionPlaceAt(const Document& document, std::uint32_t place);

}  // namespace Vesk::editor
