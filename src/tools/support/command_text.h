// Command texts of compilers: quoting for the command interpreter, and response files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "run/recipe.h"

namespace Vesk {

/// One argument in the form that a system's interpreter passes to a program unchanged; unquoted if
/// possible. `quoteForHost` uses the rules of the system that vesk runs on.
std::string quoteForPosix(std::string_view argument);
std::string quoteForWindows(std::string_view argument);
std::string quoteForHost(std::string_view argument);

/// How programs read response files.
enum class ResponseFiles {
    Gnu,      ///< backslashes escape, even in quotes; the text is UTF-8
    Windows,  ///< like a Windows command line; UTF-16 if it is not ASCII
};

/// One argument in a response file, written so that a path keeps its backslashes.
std::string quoteForResponseFile(std::string_view argument,
                                 ResponseFiles style = ResponseFiles::Gnu);

/// A command that is put together piece by piece. Copies are cheap, so what many commands have in
/// common is put together once.
class CommandText {
  public:
    explicit CommandText(ResponseFiles style = ResponseFiles::Gnu) : style_(style) {}

    /// One argument, whatever it contains; `option` and `value` together form one argument.
    void add(std::string_view argument);
    void add(std::string_view option, std::string_view value);
    void add(std::string_view option, const std::vector<std::string>& values);

    /// Text that its author has already quoted; empty text adds nothing.
    void addAsWritten(std::string_view text);

    /// Whatever follows may go into a response file.
    void allowResponseFile() noexcept;

    /// Sets the recipe's command. Also sets its response file if the interpreter would not pass the
    /// command on unchanged because of its length or, on Windows, of a percent sign. The file
    /// stands beside `stem`, and its content is part of its name: equal command texts are equal
    /// commands.
    void finish(Recipe& recipe, const std::filesystem::path& stem,
                std::string_view stemInCommand) const;

    const std::string& text() const noexcept { return text_; }

  private:
    void append(std::string_view hostText, std::string_view fileText);

    ResponseFiles style_;
    std::string text_;
    std::string fileText_;  ///< the part from `fileStart_` on, for a response file
    std::size_t fileStart_ = std::string::npos;
    bool needsFile_ = false;
};

}  // namespace Vesk
