#include "grammar/error_listeners.h"

#include <fmt/format.h>
#include <iostream>
#include <utility>

#include "base/console.h"
#include "base/source_place.h"
#include "grammar/syntax_hints.h"

namespace Vesk {

VeskErrorCounter::VeskErrorCounter(std::string name, bool quiet)
    : name_(std::move(name)), quiet_(quiet) {}

void VeskErrorCounter::syntaxError(antlr4::Recognizer*, antlr4::Token*, std::size_t line,
                                   std::size_t column, const std::string& message,
                                   std::exception_ptr) {
    ++count_;
    if (!quiet_) {
        console::flush();
        std::cerr << fmt::format("{}: line {}:{} {}\n", name_, line, column, message);
    }
}

std::vector<std::string> ErrorHelp::lines(antlr4::Recognizer* recognizer,
                                          const antlr4::Token* offending, std::size_t line,
                                          std::size_t column) {
    ++column;  // the runtime counts columns from 0, editors from 1
    std::vector<std::string> lines = placeLines(name_, text_, line, column);
    std::string hint = hintFor(recognizer, offending, textFrom(text_, line, column));
    if (!hint.empty() && line != hinted_ && given_.insert(hint).second) {
        hinted_ = line;
        lines.push_back(std::move(hint));
    }
    return lines;
}

void PlaceListener::syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending,
                                std::size_t line, std::size_t column, const std::string& message,
                                std::exception_ptr cause) {
    antlr4::ConsoleErrorListener::INSTANCE.syntaxError(recognizer, offending, line, column, message,
                                                       cause);
    for (const std::string& text : help_.lines(recognizer, offending, line, column)) {
        console::error("  {}", text);
    }
}

ThrowingErrorListener::ThrowingErrorListener(std::string sourceName, std::string_view text)
    : sourceName_(std::move(sourceName)), help_(sourceName_, text) {}

void ThrowingErrorListener::syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending,
                                        std::size_t line, std::size_t column,
                                        const std::string& message, std::exception_ptr) {
    std::string text = fmt::format("{}({},{}): ", sourceName_, line, column);
    if (offending != nullptr) {
        text += fmt::format("'{}' ", offending->getText());
    }
    messages_.push_back(text + message);
    for (std::string& note : help_.lines(recognizer, offending, line, column)) {
        notes_.push_back(std::move(note));
    }
}

}  // namespace Vesk
