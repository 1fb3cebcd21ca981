// The tokens of a text and what stands between them, for code that must preserve comments.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

struct TokenText {
    std::string before;  ///< blanks and comments between this token and the previous one
    std::string text;    ///< as it is written; empty for the end of the text
};

/// All tokens in order, ending with the end of the text. Characters that begin no token are left
/// out; a byte order mark is skipped.
std::vector<TokenText> tokenTexts(std::string_view text);

}  // namespace Vesk
