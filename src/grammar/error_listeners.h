// What happens to syntax errors where they do not go straight to the console.
#pragma once

#include <cstdint>
#include <set>
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

/// What helps with the errors of one file: the place of each, as file, line and column, the line's
/// text, and a caret below the column; then how to write what is meant. That is said once in a
/// file, and of one line once: the parser mostly stumbles again over what follows.
class ErrorHelp {
  public:
    /// Name and text must outlive the object.
    ErrorHelp(std::string_view name, std::string_view text) : name_(name), text_(text) {}

    /// The lines for an error as a listener gets it.
    std::vector<std::string> lines(antlr4::Recognizer* recognizer, const antlr4::Token* offending,
                                   std::size_t line, std::size_t column);

  private:
    std::string_view name_;
    std::string_view text_;
    std::set<std::string> given_;
    std::size_t hinted_ = 0;  ///< the last line with a hint
};

/// Has the runtime's console listener print an error, and what helps below. It stands in for that
/// listener, as the runtime calls several in the order of their addresses.
class PlaceListener : public antlr4::BaseErrorListener {
  public:
    /// Name and text must outlive the listener.
    PlaceListener(std::string_view name, std::string_view text) : help_(name, text) {}

    void syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending, std::size_t line,
                     std::size_t column, const std::string& message,
                     std::exception_ptr cause) override;

  private:
    ErrorHelp help_;
};

/// Collects errors as "source(1,4): 'token' message", and what helps with them. Throws nothing:
/// the caller of the parser does, with all of them.
class ThrowingErrorListener : public antlr4::BaseErrorListener {
  public:
    /// The text must outlive the listener.
    ThrowingErrorListener(std::string sourceName, std::string_view text);

    void syntaxError(antlr4::Recognizer* recognizer, antlr4::Token* offending, std::size_t line,
                     std::size_t column, const std::string& message,
                     std::exception_ptr cause) override;

    const std::vector<std::string>& messages() const noexcept { return messages_; }
    const std::vector<std::string>& notes() const noexcept { return notes_; }

  private:
    std::string sourceName_;
    ErrorHelp help_;
    std::vector<std::string> messages_;
    std::vector<std::string> notes_;
};

}  // namespace Vesk
