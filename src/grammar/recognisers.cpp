#include "grammar/recognisers.h"

#include <fmt/format.h>

#include "base/exception.h"
#include "grammar/loaders.h"

namespace Vesk {

std::unique_ptr<antlr4::Token> NestingLexer::nextToken() {
    auto next = CommonLexer::nextToken();
    switch (next->getType()) {
        case LBRACE:
        case LSQUARE:
            if (++open_ > kMaxNesting) {
                throw VeskException(fmt::format(
                    "{}({},{}): more than {} braces and brackets are open here. Give what is "
                    "inside "
                    "a variable of its own.",
                    getSourceName(), next->getLine(), next->getCharPositionInLine(), kMaxNesting));
            }
            break;
        case RBRACE:
        case RSQUARE:
            open_ -= open_ > 0 ? 1 : 0;
            break;
        default:
            break;
    }
    return next;
}

void makeFast(Recognisers& recognisers) {
    recognisers.lexer.removeErrorListeners();
    recognisers.parser.removeErrorListeners();
    recognisers.parser.setErrorHandler(std::make_shared<antlr4::BailErrorStrategy>());
    recognisers.parser.getInterpreter<antlr4::atn::ParserATNSimulator>()->setPredictionMode(
        antlr4::atn::PredictionMode::SLL);
}

}  // namespace Vesk
