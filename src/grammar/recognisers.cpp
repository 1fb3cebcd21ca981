#include "grammar/recognisers.h"

#include <fmt/format.h>

#include "base/exception.h"
#include "base/printable.h"
#include "grammar/loaders.h"

namespace Vesk {
namespace {

/// Text is read on one thread, so the automaton that lexers share needs no lock for each character.
/// Locking would take a third of the time that the runtime spends on one.
class LoneSimulator : public antlr4::atn::LexerATNSimulator {
  public:
    using LexerATNSimulator::LexerATNSimulator;

  protected:
    antlr4::dfa::DFAState* getExistingTargetState(antlr4::dfa::DFAState* state,
                                                  std::size_t symbol) override {
        if (symbol > MAX_DFA_EDGE) {
            return nullptr;
        }
        const auto edge = state->edges.find(symbol - MIN_DFA_EDGE);
        return edge == state->edges.end() ? nullptr : edge->second;
    }
};

/// The runtime's error handling, but with control characters in messages escaped.
class PrintableErrors : public antlr4::DefaultErrorStrategy {
  protected:
    std::string escapeWSAndQuote(const std::string& text) const override {
        return printable(DefaultErrorStrategy::escapeWSAndQuote(text));
    }
};

}  // namespace

CheckingLexer::CheckingLexer(antlr4::CharStream* input, Purpose purpose)
    : CommonLexer(input),
      purpose_(purpose),
      simulator_(getInterpreter<antlr4::atn::LexerATNSimulator>()) {
    auto& automata = simulator_->_decisionToDFA;
    auto& cache = simulator_->getSharedContextCache();
    simulator_ = new LoneSimulator(this, getATN(), automata, cache);
    setInterpreter(simulator_);  // which deletes the other
}

/// The rule would skip them one run at a time, each for the price of a token.
void CheckingLexer::passBlanks() {
    for (std::size_t next = _input->LA(1);
         next == ' ' || next == '\n' || next == '\t' || next == '\r'; next = _input->LA(1)) {
        simulator_->consume(_input);
    }
}

std::unique_ptr<antlr4::Token> CheckingLexer::nextToken() {
    passBlanks();
    auto next = CommonLexer::nextToken();
    switch (next->getType()) {
        case LBRACE:
        case LSQUARE:
            countOpen(*next);
            break;
        case RBRACE:
        case RSQUARE:
            open_ -= open_ > 0 ? 1 : 0;
            break;
        case SLASH:
            if (_input->LA(1) == '*') {
                reportOpenComment();
                return CommonLexer::nextToken();
            }
            break;
        default:
            break;
    }
    return next;
}

void CheckingLexer::skip() {
    const auto start = static_cast<ssize_t>(tokenStartCharIndex);
    if (purpose_ == Purpose::ForEditors &&
        _input->getText(antlr4::misc::Interval(start, start)) == "/") {
        channel = antlr4::Token::HIDDEN_CHANNEL;
    } else {
        CommonLexer::skip();
    }
}

void CheckingLexer::recover(const antlr4::LexerNoViableAltException& error) {
    CommonLexer::recover(error);
    if (purpose_ == Purpose::ForEditors) {
        goBackToEndOfLine();
    }
}

/// From where the lexer gave up to the end of the line on which the token begins.
void CheckingLexer::goBackToEndOfLine() {
    const std::size_t end = _input->index();
    _input->seek(tokenStartCharIndex);
    simulator_->setLine(tokenStartLine);
    simulator_->setCharPositionInLine(tokenStartCharPositionInLine);
    while (_input->index() < end && _input->LA(1) != '\n') {
        simulator_->consume(_input);
    }
}

void CheckingLexer::restart(antlr4::CharStream* input, std::size_t line, std::size_t column) {
    setInputStream(input);
    setLine(line);
    setCharPositionInLine(column);
    open_ = 0;
}

std::string CheckingLexer::getErrorDisplay(const std::string& text) {
    return printable(CommonLexer::getErrorDisplay(text));
}

Recognisers::Recognisers(antlr4::CharStream* input, CheckingLexer::Purpose purpose)
    : lexer(input, purpose), tokens(&lexer), parser(&tokens) {
    parser.setErrorHandler(std::make_shared<PrintableErrors>());
}

void Recognisers::restart(antlr4::CharStream* input, std::size_t line, std::size_t column) {
    lexer.restart(input, line, column);
    tokens.setTokenSource(&lexer);
    parser.setTokenStream(&tokens);
}

void CheckingLexer::countOpen(const antlr4::Token& bracket) {
    if (++open_ > kMaxNesting) {
        throw VeskException(fmt::format(
            "{}({},{}): more than {} braces and brackets are open here. Move what is "
            "inside into a variable of its own.",
            getSourceName(), bracket.getLine(), bracket.getCharPositionInLine(), kMaxNesting));
    }
}

void CheckingLexer::reportOpenComment() {
    const std::size_t start = tokenStartCharIndex;
    while (_input->LA(1) != antlr4::IntStream::EOF) {
        simulator_->consume(_input);
    }
    notifyListeners(antlr4::LexerNoViableAltException(this, _input, start, nullptr));
}

void makeFast(Recognisers& recognisers) {
    recognisers.lexer.removeErrorListeners();
    recognisers.parser.removeErrorListeners();
    recognisers.parser.setErrorHandler(std::make_shared<antlr4::BailErrorStrategy>());
    recognisers.parser.getInterpreter<antlr4::atn::ParserATNSimulator>()->setPredictionMode(
        antlr4::atn::PredictionMode::SLL);
}

}  // namespace Vesk
