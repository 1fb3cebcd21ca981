// Command texts of compilers: quoting for the command interpreter, and response files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "run/recipe.h"

namespace Vesk {

/// One argument as the interpreter of a system hands it to a program unchanged; plain where it can
/// be. `quoteForHost` picks the rules of the system that vesk runs on.
std::string quoteForPosix(std::string_view argument);
std::string quoteForWindows(std::string_view argument);
std::string quoteForHost(std::string_view argument);

/// How programs read response files.
enum class ResponseFiles {
    Gnu,      ///< backslashes escape, in quotes too; the text is UTF-8
    Windows,  ///< as a command line of Windows; what is not ASCII is in UTF-16
};

/// One argument in a response file, so that a path keeps its backslashes.
std::string quoteForResponseFile(std::string_view argument,
                                 ResponseFiles style = ResponseFiles::Gnu);

/// A command that is put together piece by piece. A copy is cheap, so what many commands have in
/// common is put together once.
class CommandText {
  public:
    explicit CommandText(ResponseFiles style = ResponseFiles::Gnu) : style_(style) {}

    /// One argument, whatever it contains; `option` and `value` make one argument together.
    void add(std::string_view argument);
    void add(std::string_view option, std::string_view value);
    void add(std::string_view option, const std::vector<std::string>& values);

    /// Text that its author has quoted already; empty text is nothing.
    void addAsWritten(std::string_view text);

    /// What follows may go into a response file.
    void allowResponseFile() noexcept;

    /// Sets the recipe's command, and its response file when the interpreter would not hand the
    /// command on unchanged: for its length, or on Windows for a percent sign. The file stands
    /// beside `stem` and is named by its content too: a command text that is the same is the same
    /// command.
    void finish(Recipe& recipe, const std::filesystem::path& stem,
                std::string_view stemInCommand) const;

    const std::string& text() const noexcept { return text_; }

  private:
    void append(std::string_view hostText, std::string_view fileText);

    ResponseFiles style_;
    std::string text_;
    std::string fileText_;  ///< the same from `fileStart_` on, for a response file
    std::size_t fileStart_ = std::string::npos;
    bool needsFile_ = false;
};

}  // namespace Vesk
