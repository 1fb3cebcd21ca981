// What each word of a text is, for colours that know more than patterns do.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "editor/document.h"

namespace Vesk::editor {

enum class TokenMeaning : std::uint8_t {
    Comment,
    Keyword,
    String,
    Number,
    Variable,
    Target,
    Parameter,
};

/// As the protocol calls them, in the order of TokenMeaning.
inline constexpr std::string_view kTokenMeanings[] = {
    "comment", "keyword", "string", "number", "variable", "function", "parameter",
};

struct SemanticToken {
    TextSpan span;
    TokenMeaning meaning;
};

/// In order, none reaching into another; a string is parted at its references. Some have more than
/// one line.
std::vector<SemanticToken> semanticTokens(const Document& document);

}  // namespace Vesk::editor
