#include "editor/features/semantic_tokens.h"

#include <optional>
#include <unordered_map>
#include <utility>

#include "base/ci_string.h"
#include "types/values/expansion.h"

namespace Vesk::editor {
namespace {

/// What is no variable among the names of a piece, by where they begin.
using Meanings = std::unordered_map<std::uint32_t, TokenMeaning>;

void addParameters(const Block& block, Meanings& meanings) {
    for (const Name& parameter : block.parameters) {
        meanings[parameter.span.begin] = TokenMeaning::Parameter;
        for (const Read& read : block.reads) {
            if (equalsIgnoringCase(read.path.front().text, parameter.text)) {
                meanings[read.path.front().span.begin] = TokenMeaning::Parameter;
            }
        }
    }
}

Meanings meaningsIn(const Symbols& symbols) {
    Meanings meanings;
    for (const Block& block : symbols.blocks) {
        meanings[block.name.span.begin] = TokenMeaning::Target;
        for (const DependencySymbol& dependency : block.dependencies) {
            if (!dependency.target.empty()) {
                meanings[dependency.target.span.begin] = TokenMeaning::Target;
            }
        }
        addParameters(block, meanings);
    }
    return meanings;
}

std::optional<TokenMeaning> meaningOf(TokenClass kind) {
    switch (kind) {
        case TokenClass::Keyword:
            return TokenMeaning::Keyword;
        case TokenClass::Name:
            return TokenMeaning::Variable;
        case TokenClass::String:
        case TokenClass::RawString:
        case TokenClass::PathString:
        case TokenClass::IndexName:
            return TokenMeaning::String;
        case TokenClass::Number:
            return TokenMeaning::Number;
        case TokenClass::LineComment:
        case TokenClass::BlockComment:
            return TokenMeaning::Comment;
        case TokenClass::Punctuation:
            break;
    }
    return std::nullopt;
}

class Colours {
  public:
    explicit Colours(const Document& document) : document_(document) {}

    std::vector<SemanticToken> run() {
        for (const Piece& piece : document_.pieces()) {
            const Meanings meanings = meaningsIn(*piece.symbols);
            for (const SyntaxToken& token : piece.tree->tokens) {
                if (const auto meaning = meaningOf(token.kind)) {
                    const bool isName = token.kind == TokenClass::Name;
                    const auto known = meanings.find(token.span.begin);
                    add(piece, token, isName && known != meanings.end() ? known->second : *meaning);
                }
            }
        }
        return std::move(tokens_);
    }

  private:
    void add(const Piece& piece, const SyntaxToken& token, TokenMeaning meaning) {
        const TextSpan span = piece.inDocument(token.span);
        if (token.kind == TokenClass::String || token.kind == TokenClass::PathString) {
            addParts(span);
        } else {
            tokens_.push_back({span, meaning});
        }
    }

    void addParts(TextSpan span) {
        std::uint32_t from = span.begin;
        for (const TextReference& reference : referencesIn(span.of(document_.text()))) {
            const auto begin = static_cast<std::uint32_t>(span.begin + reference.begin);
            const auto end = static_cast<std::uint32_t>(span.begin + reference.end);
            if (begin < from || begin == end) {
                continue;
            }
            tokens_.push_back({{from, begin}, TokenMeaning::String});
            tokens_.push_back({{begin, end}, TokenMeaning::Variable});
            from = end;
        }
        tokens_.push_back({{from, span.end}, TokenMeaning::String});
    }

    const Document& document_;
    std::vector<SemanticToken> tokens_;
};

}  // namespace

std::vector<SemanticToken> semanticTokens(const Document& document) {
    return Colours(document).run();
}

}  // namespace Vesk::editor
