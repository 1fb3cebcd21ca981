// Lexer and parser over one text, and how they are run.
#pragma once

#include <memory>
#include <string>

#include "CommonLexer.h"
#include "VeskTopParser.h"
#include "antlr4-runtime.h"

namespace Vesk {

/// The lexer, with two checks that rules cannot make. It counts how many braces and square brackets
/// are open, and throws VeskException, with the place, for one more than kMaxNesting: the parser
/// would overflow the stack. And it sees that a comment is never closed: one error that covers the
/// rest of the text, instead of a slash, an asterisk and the comment's words as tokens.
class CheckingLexer : public grammar::CommonLexer {
  public:
    explicit CheckingLexer(antlr4::CharStream* input);

    std::unique_ptr<antlr4::Token> nextToken() override;

    /// Messages go to a terminal, texts of files may hold anything.
    std::string getErrorDisplay(const std::string& text) override;

  private:
    void countOpen(const antlr4::Token& bracket);
    void reportOpenComment();

    std::size_t open_ = 0;
};

/// A lexer and a parser with the runtime's default listeners. Owns tokens and parse tree.
struct Recognisers {
    explicit Recognisers(antlr4::CharStream* input);

    CheckingLexer lexer;
    antlr4::CommonTokenStream tokens;
    grammar::VeskTopParser parser;
};

/// Sets recognisers up for a fast, silent attempt: errors end the parse, conflicts are settled
/// without looking at the calling rules. What it accepts, the thorough parse accepts as well, with
/// the same tree.
void makeFast(Recognisers& recognisers);

/// Runs `rule` in a fast attempt. Null when the text has errors, in the lexer or the parser; the
/// text is then to be parsed again, by recognisers that report them.
template <class Tree>
Tree* tryRule(Recognisers& recognisers, Tree* (grammar::VeskTopParser::*rule)()) {
    try {
        Tree* const tree = (recognisers.parser.*rule)();
        return recognisers.lexer.getNumberOfSyntaxErrors() == 0 ? tree : nullptr;
    } catch (const antlr4::ParseCancellationException&) {
        return nullptr;
    }
}

}  // namespace Vesk
