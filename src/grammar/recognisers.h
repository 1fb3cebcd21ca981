// Lexer and parser for one text, and how to run them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "CommonLexer.h"
#include "VeskTopParser.h"
#include "antlr4-runtime.h"

namespace Vesk {

/// The lexer, with two checks that rules cannot express. It counts open braces and square brackets
/// and throws VeskException, with the place, beyond kMaxNesting, where the parser would overflow
/// the stack. And it detects a comment that is never closed: one error that covers the rest of the
/// text, instead of a slash, an asterisk and the comment's words as tokens.
class CheckingLexer : public grammar::CommonLexer {
  public:
    /// `ForEditors`: comments become tokens of the hidden channel, and of a string that is not
    /// closed only the rest of its line is left out: its end is most likely to be typed there.
    enum class Purpose : std::uint8_t { ForModels, ForEditors };

    explicit CheckingLexer(antlr4::CharStream* input, Purpose purpose = Purpose::ForModels);

    std::unique_ptr<antlr4::Token> nextToken() override;
    void skip() override;
    void recover(const antlr4::LexerNoViableAltException& error) override;

    /// Continues with another text. `line` (from 1) and `column` (from 0) are the place of its
    /// first character in the file.
    void restart(antlr4::CharStream* input, std::size_t line, std::size_t column);

    // The runtime's own cast the simulator to its class each time that a token is made.
    std::size_t getLine() const override { return simulator_->getLine(); }
    std::size_t getCharPositionInLine() override { return simulator_->getCharPositionInLine(); }

    /// Messages go to a terminal, and texts of files may contain anything.
    std::string getErrorDisplay(const std::string& text) override;

  private:
    void passBlanks();
    void countOpen(const antlr4::Token& bracket);
    void reportOpenComment();
    void goBackToEndOfLine();

    Purpose purpose_;
    antlr4::atn::LexerATNSimulator* simulator_;
    std::size_t open_ = 0;
};

/// A lexer and a parser with the runtime's default listeners. Owns the tokens and the parse tree.
struct Recognisers {
    explicit Recognisers(antlr4::CharStream* input,
                         CheckingLexer::Purpose purpose = CheckingLexer::Purpose::ForModels);

    /// Goes on with another text, as `CheckingLexer::restart`. The last tree is gone then.
    void restart(antlr4::CharStream* input, std::size_t line, std::size_t column);

    CheckingLexer lexer;
    antlr4::CommonTokenStream tokens;
    grammar::VeskTopParser parser;
};

/// Sets recognisers up for a fast, silent attempt: an error ends the parse, and conflicts are
/// settled without looking at the calling rules. Whatever it accepts, the thorough parse accepts as
/// well, with the same tree.
void makeFast(Recognisers& recognisers);

/// Runs `rule` in a fast attempt. Null if the text has errors, in the lexer or the parser; the text
/// is then parsed again by recognisers that report them.
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
