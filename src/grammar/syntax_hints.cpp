#include "grammar/syntax_hints.h"

#include <array>
#include <fmt/format.h>

#include "CommonLexer.h"

#include "base/text.h"

namespace Vesk {
namespace {

using Tokens = grammar::CommonLexer;

constexpr const char* kComment = "a comment begins with '//'";
constexpr const char* kDoubleQuotes = "write text in double quotes: {}";
constexpr const char* kEscape =
    "a string has no escapes: a double quote in it is ${ascii[34]}, or write the whole as "
    "R\"(...)\"";

/// The rejected token and its surroundings. Beyond both ends the type is EOF.
class Place {
  public:
    Place(antlr4::TokenStream& tokens, const antlr4::Token& offending, std::string_view rest)
        : tokens_(tokens), index_(offending.getTokenIndex()), rest_(rest) {}

    std::size_t type(std::ptrdiff_t offset = 0) const {
        const antlr4::Token* const token = at(offset);
        return token == nullptr ? antlr4::Token::EOF : token->getType();
    }

    std::string text(std::ptrdiff_t offset = 0) const {
        const antlr4::Token* const token = at(offset);
        return token == nullptr ? std::string() : token->getText();
    }

    std::size_t line(std::ptrdiff_t offset = 0) const {
        const antlr4::Token* const token = at(offset);
        return token == nullptr ? 0 : token->getLine();
    }

    bool isString(std::ptrdiff_t offset) const { return type(offset) == Tokens::STRING; }
    bool isWord(std::ptrdiff_t offset) const {
        return type(offset) == Tokens::IDENTIFIER || type(offset) == Tokens::NAME_STR;
    }

    /// Whether no blank separates this token from the one before it.
    bool touches(std::ptrdiff_t offset) const {
        return at(offset - 1) != nullptr && at(offset) != nullptr &&
               at(offset - 1)->getStopIndex() + 1 == at(offset)->getStartIndex();
    }

    /// The innermost bracket of a kind that is open before this token; null if there is none.
    const antlr4::Token* openBracket(std::size_t open, std::size_t close) const {
        std::size_t closed = 0;
        for (std::ptrdiff_t offset = -1; at(offset) != nullptr; --offset) {
            if (type(offset) == close) {
                ++closed;
            } else if (type(offset) == open && closed-- == 0) {
                return at(offset);
            }
        }
        return nullptr;
    }

    bool inBraces() const { return openBracket(Tokens::LBRACE, Tokens::RBRACE) != nullptr; }

    /// The text around this token without blanks, as far as it belongs to one value.
    std::string word() const {
        std::ptrdiff_t first = 0;
        while (touches(first) && !opens(type(first - 1))) {
            --first;
        }
        std::string text;
        for (; first < 0; ++first) {
            text += this->text(first);
        }
        return text.append(rest_.substr(0, rest_.find_first_of(" \t\r\n,;]}")));
    }

  private:
    static bool opens(std::size_t type) {
        return type == Tokens::LSQUARE || type == Tokens::EQUALS || type == Tokens::APPEND ||
               type == Tokens::ASSIGNEMPTY || type == Tokens::COMMA || type == Tokens::LBRACE;
    }

    const antlr4::Token* at(std::ptrdiff_t offset) const {
        const auto position = static_cast<std::ptrdiff_t>(index_) + offset;
        return position < 0 || position >= static_cast<std::ptrdiff_t>(tokens_.size())
                   ? nullptr
                   : tokens_.get(static_cast<std::size_t>(position));
    }

    antlr4::TokenStream& tokens_;
    std::size_t index_;
    std::string_view rest_;
};

std::string inQuotes(std::string_view text) {
    return fmt::format(kDoubleQuotes, fmt::format("\"{}\"", text));
}

/// "a\"b": the inner quote ended the string, or a string continues right behind it.
std::string escapedQuote(const Place& place) {
    const bool ended = place.isString(-1) && place.text(-1).ends_with("\\\"");
    return ended && place.touches(0) ? kEscape : "";
}

/// src/a.c or a.b.c without quotes, and numbers with a fraction.
std::string nameWithoutQuotes(const Place& place) {
    const bool separator = place.type() == Tokens::SLASH || place.type() == Tokens::DOT;
    if (!separator || !place.touches(0)) {
        return {};
    }
    return (place.type(-1) == Tokens::NUMBER ? "numbers are whole; " : "") + inQuotes(place.word());
}

std::string wordOfAnotherLanguage(const Place& place) {
    for (const std::ptrdiff_t offset : {0, -1}) {
        const std::string word = place.text(offset);
        if (word == "else" || word == "elif") {
            return "there is no 'else': write a second 'if' with '!=' for '='";
        }
        if (word == "and" || word == "or") {
            return "a condition is one comparison: put one 'if' into the other for 'and', write "
                   "two "
                   "for 'or'";
        }
        if (word == "not" && place.type(offset - 1) == Tokens::IF_STR) {
            return "a condition compares with '=', '!=', '<' or '>': if a != \"...\" { ... }";
        }
    }
    return {};
}

std::string missingBrace(const Place& place) {
    const bool ends = place.type() == antlr4::Token::EOF || place.type() == Tokens::RBRACE;
    if (!ends) {
        return {};
    }
    if (const auto* const open = place.openBracket(Tokens::LSQUARE, Tokens::RSQUARE)) {
        return fmt::format("the '[' on line {} is not closed", open->getLine());
    }
    if (const auto* const open = place.openBracket(Tokens::LBRACE, Tokens::RBRACE)) {
        return fmt::format("the '{{' on line {} is not closed", open->getLine());
    }
    return {};
}

std::string semicolon(const Place& place) {
    if (place.type() != Tokens::SEMICOLON) {
        return {};
    }
    return place.line(-1) == place.line() ? "values and names need no ';' after them: leave it out"
                                          : kComment;
}

std::string comma(const Place& place) {
    if (place.type(-1) == Tokens::COMMA &&
        (place.type() == Tokens::RSQUARE || place.type() == Tokens::RBRACKET)) {
        return fmt::format("leave out the comma before '{}'", place.text());
    }
    if (place.type() == Tokens::COMMA && !place.inBraces()) {
        return "blanks separate dependencies: leave out the ','";
    }
    return place.type() == Tokens::COMMA ? "blanks separate assignments; only elements of a list "
                                           "have commas between them"
                                         : "";
}

std::string listElement(const Place& place) {
    if (place.isString(0) && place.isString(-1)) {
        return "commas separate the elements of a list";
    }
    const bool braces =
        place.isString(0) && place.type(-1) == Tokens::LBRACE && place.type(-2) == Tokens::EQUALS;
    const bool round = place.type() == Tokens::LBRACKET &&
                       (place.type(-1) == Tokens::EQUALS || place.type(-1) == Tokens::APPEND);
    return braces || round ? "write a list in square brackets: [\"a\", \"b\"]" : "";
}

std::string comparison(const Place& place) {
    const bool twice = place.type() == Tokens::EQUALS && place.type(-1) == Tokens::EQUALS;
    return twice ? "one '=' compares" : "";
}

std::string quotes(const Place& place) {
    if (place.type() == Tokens::INDEX_NAME) {
        const std::string text = place.text();
        return inQuotes(std::string_view(text).substr(1, text.size() - 2));
    }
    const bool name = place.isString(0) && place.type(-1) == Tokens::UNIT_STR;
    return name ? "write the unit's name without quotes" : "";
}

/// "project/target" in the head of a target.
std::string targetOfAnotherProject(const Place& place) {
    const bool lacksUnit = place.isWord(-1) && place.type(-2) == Tokens::SLASH &&
                           place.touches(-1) && place.isWord(-3) && !place.inBraces() &&
                           place.type() != Tokens::SLASH;
    return lacksUnit
               ? fmt::format("a target of another project is named with its unit: {}/unit::{}",
                             place.text(-3), place.text(-1))
               : "";
}

std::string colon(const Place& place) {
    if (place.type() == Tokens::COLON && place.isWord(-1) && place.inBraces()) {
        return fmt::format("'=' gives a variable its value: {} = ...", place.text(-1));
    }
    if (place.type() == Tokens::LBRACE && place.isWord(-1) && !place.inBraces()) {
        return fmt::format("put a ':' after the target's name: {}: {{ ... }}", place.text(-1));
    }
    const bool assigns = place.type() == Tokens::EQUALS || place.type() == Tokens::APPEND;
    return assigns && !place.inBraces()
               ? "put variables into the braces of a target or a profile: name: { ... }"
               : "";
}

std::string syntaxHint(antlr4::TokenStream& tokens, const antlr4::Token& offending,
                       std::string_view rest) {
    static constexpr std::array kHints = {escapedQuote,
                                          wordOfAnotherLanguage,
                                          nameWithoutQuotes,
                                          missingBrace,
                                          semicolon,
                                          comma,
                                          listElement,
                                          comparison,
                                          quotes,
                                          targetOfAnotherProject,
                                          colon};
    const Place place(tokens, offending, rest);
    for (const auto& hint : kHints) {
        if (std::string text = hint(place); !text.empty()) {
            return text;
        }
    }
    return {};
}

std::string lexicalHint(std::string_view rest) {
    if (rest.starts_with('#') || rest.starts_with('%')) {
        return kComment;
    }
    if (rest.starts_with("/*")) {
        return "the comment is not closed: '*/' is missing";
    }
    if (rest.starts_with("R\"(") || rest.starts_with("P\"(")) {
        return "the string is not closed: ')\"' is missing";
    }
    if (rest.starts_with('"')) {
        return "the string is not closed: '\"' is missing";
    }
    if (rest.starts_with('\\')) {
        return kEscape;
    }
    if (rest.starts_with("&&") || rest.starts_with("||")) {
        return "a condition is one comparison: put one 'if' into the other for 'and', write two "
               "for "
               "'or'";
    }
    if (rest.starts_with('$')) {
        return "write a reference in a string, as \"${name}\", or the name alone";
    }
    if (rest.size() > 1 && (rest.starts_with('-') || rest.starts_with('*')) && rest[1] != ' ') {
        return inQuotes(rest.substr(0, rest.find_first_of(" \t\r\n,;]}")));
    }
    return {};
}

}  // namespace

std::string hintFor(antlr4::Recognizer* recognizer, const antlr4::Token* offending,
                    std::string_view rest) {
    auto* const parser = dynamic_cast<antlr4::Parser*>(recognizer);
    return parser != nullptr && offending != nullptr
               ? syntaxHint(*parser->getTokenStream(), *offending, rest)
               : lexicalHint(rest);
}

}  // namespace Vesk
