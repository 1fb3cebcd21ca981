// What happens to syntax errors where they do not go straight to the console.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "antlr4-runtime.h"

namespace Vesk {

/// Counts errors and, unless quiet, prints each to standard error: "name: line 1:4 message".
class VeskErrorCounter : public antlr4::BaseErrorListener {
  public:
    VeskErrorCounter(std::string name, bool quiet);

    void syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending, std::size_t line,
                     std::size_t column, const std::string& message,
                     std::exception_ptr cause) override;

    const std::string& name() const noexcept { return name_; }
    std::int32_t count() const noexcept { return count_; }

  private:
    std::string name_;
    bool quiet_;
    std::int32_t count_ = 0;
};

/// Has the runtime's console listener print an error, and shows its place below: file, line and
/// column, the line's text, and a caret below the column. It stands in for that listener, as the
/// runtime calls several in the order of their addresses.
class PlaceListener : public antlr4::BaseErrorListener {
  public:
    /// Name and text must outlive the listener.
    PlaceListener(std::string_view name, std::string_view text) : name_(name), text_(text) {}

    void syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending, std::size_t line,
                     std::size_t column, const std::string& message,
                     std::exception_ptr cause) override;

  private:
    std::string_view name_;
    std::string_view text_;
};

/// Collects errors as "source(1,4): 'token' message". Throws nothing: whoever started the parser
/// does, with all of them.
class ThrowingErrorListener : public antlr4::BaseErrorListener {
  public:
    explicit ThrowingErrorListener(std::string sourceName);

    void syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending, std::size_t line,
                     std::size_t column, const std::string& message,
                     std::exception_ptr cause) override;

    const std::vector<std::string>& messages() const noexcept { return messages_; }

  private:
    std::string sourceName_;
    std::vector<std::string> messages_;
};

}  // namespace Vesk
