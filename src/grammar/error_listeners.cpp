#include "grammar/error_listeners.h"

#include <fmt/format.h>
#include <iostream>
#include <utility>

#include "base/console.h"
#include "base/source_place.h"

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

void PlaceListener::syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending,
                                std::size_t line, std::size_t column, const std::string& message,
                                std::exception_ptr cause) {
    antlr4::ConsoleErrorListener::INSTANCE.syntaxError(recognizer, offending, line, column, message,
                                                       cause);
    // The runtime counts columns from 0, editors from 1.
    for (const std::string& text : placeLines(name_, text_, line, column + 1)) {
        console::error("  {}", text);
    }
}

ThrowingErrorListener::ThrowingErrorListener(std::string sourceName)
    : sourceName_(std::move(sourceName)) {}

void ThrowingErrorListener::syntaxError(antlr4::Recognizer*, antlr4::Token* offending,
                                        std::size_t line, std::size_t column,
                                        const std::string& message, std::exception_ptr) {
    std::string text = fmt::format("{}({},{}): ", sourceName_, line, column);
    if (offending != nullptr) {
        text += fmt::format("'{}' ", offending->getText());
    }
    messages_.push_back(text + message);
}

}  // namespace Vesk
