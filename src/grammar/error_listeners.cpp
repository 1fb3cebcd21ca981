#include "grammar/error_listeners.h"

#include <fmt/format.h>
#include <iostream>
#include <utility>

#include "base/console.h"

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
