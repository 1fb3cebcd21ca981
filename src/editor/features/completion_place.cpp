#include "editor/features/completion_place.h"

#include <algorithm>
#include <vector>

namespace Vesk::editor {
namespace {

constexpr std::string_view kWord =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";
constexpr std::string_view kReference =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./:";

/// Reads the tokens before the cursor; the tree of a text that is being typed says too little.
class Reader {
  public:
    Reader(const Document& document, std::uint32_t place)
        : document_(document),
          piece_(document.pieceAt(place)),
          text_(document.textOf(piece_)),
          place_(piece_.inPiece(place)) {}

    CompletionPlace run() {
        if (inString() || inComment()) {
            return std::move(found_);
        }
        const std::size_t start = startOf(kReference);
        found_.before = text_.substr(start, place_ - start);
        setWord(startOf(kWord));
        readTokens(start);
        return std::move(found_);
    }

  private:
    std::size_t startOf(std::string_view characters) const {
        const std::size_t before = text_.substr(0, place_).find_last_not_of(characters);
        return before == std::string_view::npos ? 0 : before + 1;
    }

    void setWord(std::size_t start) {
        const std::size_t end = text_.find_first_not_of(kWord, place_);
        found_.word = piece_.inDocument(
            {static_cast<std::uint32_t>(start),
             static_cast<std::uint32_t>(end == std::string_view::npos ? text_.size() : end)});
    }

    bool inComment() const {
        return std::ranges::any_of(piece_.tree->tokens, [this](const SyntaxToken& token) {
            const bool line = token.kind == TokenClass::LineComment;
            return token.isComment() && token.span.begin < place_ &&
                   (place_ < token.span.end || (line && place_ == token.span.end));
        });
    }

    /// Where the string begins that the cursor is in: one that is closed, or on this line one that
    /// is not.
    bool inString() {
        for (const SyntaxToken& token : piece_.tree->tokens) {
            const bool isText =
                token.kind == TokenClass::String || token.kind == TokenClass::PathString;
            if (isText && token.span.begin < place_ && place_ < token.span.end) {
                return setString(token.span.begin, token.span.end - closing(token.kind));
            }
        }
        for (const SyntaxError& error : piece_.tree->errors) {
            const std::string_view rest = text_.substr(error.span.begin);
            const bool opens = rest.starts_with('"') || rest.starts_with("P\"(");
            const std::size_t lineEnd = text_.find('\n', error.span.begin);
            if (error.lexical && opens && error.span.begin < place_ && place_ <= lineEnd) {
                return setString(error.span.begin,
                                 static_cast<std::uint32_t>(std::min(lineEnd, text_.size())));
            }
        }
        return false;
    }

    static std::uint32_t closing(TokenClass kind) { return kind == TokenClass::PathString ? 2 : 1; }

    bool setString(std::uint32_t begin, std::uint32_t end) {
        const bool path = text_.substr(begin).starts_with("P\"(");
        const std::uint32_t start = begin + (path ? 3 : 1);
        if (place_ < start) {
            return false;
        }
        readTokens(begin);
        const std::string_view typed = text_.substr(start, place_ - start);
        const std::size_t open = typed.find_last_of('{');
        const bool reference = open != std::string_view::npos && open > 0 &&
                               (typed[open - 1] == '$' || typed[open - 1] == '#') &&
                               typed.find('}', open) == std::string_view::npos;
        found_.before = reference ? typed.substr(open + 1) : typed;
        if (reference) {
            found_.kind = PlaceKind::Reference;
            setWord(startOf(kWord.substr(0, kWord.size() - 1)));
        } else {
            found_.kind = path ? PlaceKind::Path : PlaceKind::Text;
            const std::size_t slash = typed.find_last_of("/\\");
            const std::size_t from = slash == std::string_view::npos ? 0 : slash + 1;
            found_.word = piece_.inDocument({static_cast<std::uint32_t>(start + from),
                                             std::max(end, static_cast<std::uint32_t>(place_))});
        }
        return true;
    }

    /// Follows the braces up to `end` and keeps what the last assignment was.
    void readTokens(std::size_t end) {
        for (const SyntaxToken& token : piece_.tree->tokens) {
            if (token.span.end > end) {
                break;
            }
            if (!token.isComment()) {
                take(token.span.of(text_), token.kind);
            }
        }
        found_.kind = kind();
    }

    void take(std::string_view token, TokenClass tokenClass) {
        if (token == "{") {
            ++braces_;
            inCondition_ = false;
            found_.variable.clear();
        } else if (token == "}") {
            braces_ -= braces_ > 0 ? 1 : 0;
            if (braces_ == 0) {
                headSeen_ = false;
                found_.section.clear();
            }
        } else if (token == ":" && braces_ == 0) {
            headSeen_ = true;
        } else if (token == "[" || token == "(") {
            ++brackets_;
        } else if (token == "]" || token == ")") {
            brackets_ -= brackets_ > 0 ? 1 : 0;
        } else if (token == "if") {
            inCondition_ = true;
        } else if (braces_ == 0 && tokenClass == TokenClass::Keyword) {
            found_.section = token;
        } else if (tokenClass == TokenClass::Name && brackets_ == 0 && !expectsValue(last_)) {
            found_.variable = token;
        }
        last_ = token;
    }

    static bool expectsValue(std::string_view token) {
        return token == "=" || token == "+=" || token == "?=" || token == "!=" || token == "<" ||
               token == ">" || token == ".";
    }

    PlaceKind kind() const {
        const bool project = document_.kind() != FileKind::Unit;
        if (braces_ == 0) {
            if (headSeen_ && last_ != "=>" && last_ != "+>") {
                return brackets_ > 0 ? PlaceKind::Value : PlaceKind::Dependency;
            }
            return project ? PlaceKind::TopLevel : PlaceKind::Nothing;
        }
        if (found_.section == "import") {
            return PlaceKind::Import;
        }
        if (project && braces_ == 1) {
            return PlaceKind::Nothing;
        }
        const bool value = brackets_ > 0 || inCondition_ || expectsValue(last_) ||
                           found_.before.find('.') != std::string::npos;
        return value ? PlaceKind::Value : PlaceKind::Name;
    }

    const Document& document_;
    const Piece& piece_;
    std::string_view text_;
    std::uint32_t place_;
    CompletionPlace found_;
    std::string_view last_;
    std::size_t braces_ = 0;
    std::size_t brackets_ = 0;
    bool headSeen_ = false;
    bool inCondition_ = false;
};

}  // namespace

CompletionPlace completionPlaceAt(const Document& document, std::uint32_t place) {
    return Reader(document, place).run();
}

}  // namespace Vesk::editor
