#include "grammar/token_texts.h"

#include "CommonLexer.h"

#include "grammar/text_stream.h"
#include "grammar/utf8.h"

namespace Vesk {
namespace {

std::string textBetween(TextStream& stream, std::size_t from, std::size_t to) {
    if (from >= to) {
        return {};
    }
    return stream.getText(
        antlr4::misc::Interval(static_cast<ssize_t>(from), static_cast<ssize_t>(to) - 1));
}

}  // namespace

std::vector<TokenText> tokenTexts(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    TextStream stream(text, {});
    grammar::CommonLexer lexer(&stream);
    lexer.removeErrorListeners();
    std::vector<TokenText> texts;
    std::size_t from = 0;
    for (const auto& token : lexer.getAllTokens()) {
        texts.push_back({textBetween(stream, from, token->getStartIndex()), token->getText()});
        from = token->getStopIndex() + 1;
    }
    texts.push_back({textBetween(stream, from, stream.size()), {}});
    return texts;
}

}  // namespace Vesk
