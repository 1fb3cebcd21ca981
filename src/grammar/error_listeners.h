// What happens to syntax errors that do not go straight to the console.
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

/// The lines that help with an error of one file: its place as file, line and column, the source
/// line, a caret below the column, and then how to write what was meant. Each hint is given once in
/// a file, and only one on a line, because further errors there mostly follow from the first.
class ErrorHelp {
  public:
    /// Name and text must outlive the object.
    ErrorHelp(std::string_view name, std::string_view text) : name_(name), text_(text) {}

    /// The lines for an error, given what a listener gets.
    std::vector<std::string> lines(antlr4::Recognizer* recognizer, const antlr4::Token* offending,
                                   std::size_t line, std::size_t column);

  private:
    std::string_view name_;
    std::string_view text_;
    std::set<std::string> given_;
    std::size_t hinted_ = 0;  ///< the last line with a hint
};

/// Has the runtime's console listener print an error, and prints the help below it. It replaces
/// that listener, because the runtime calls several listeners in the order of their addresses.
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

/// Collects errors as "source(1,4): 'token': message", with the help for them. Throws nothing; the
/// caller of the parser throws them all together.
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
