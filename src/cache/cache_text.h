// The elements of cache files: numbers, strings and assignments.
//
// A number is a line. A string is a line with its length in bytes, then its bytes and a line end,
// so it may contain anything. An assignment is a line with its form, operator and modifier,
// followed by strings: its source text (form A), or its name and its text (R: raw string, S: any
// other).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "types/context/assignment.h"

namespace Vesk {

void appendNumber(std::string& out, std::uint64_t number);
void appendText(std::string& out, std::string_view text);

/// A string assignment "name = text" with no modifier.
void appendTextAssignment(std::string& out, std::string_view name, std::string_view text);

/// False, with nothing appended, for a value that no source text can express.
bool appendAssignment(std::string& out, const Assignment& assignment);

/// The same, but a value that no source text can express is written as its display text.
void appendComparableAssignment(std::string& out, const Assignment& assignment);

/// Turns every P"..." that is not a raw path literal into one, so that its backslashes stay.
std::string withRawPathLiterals(std::string_view text);

/// Takes one element after another off the front of a text. Each operation returns false if it
/// finds something else; the position is undefined after that.
class CacheReader {
  public:
    explicit CacheReader(std::string_view text) : text_(text) {}

    bool line(std::string_view& content);
    bool number(std::uint64_t& number);
    bool text(std::string_view& content);

    /// The value is final; nothing in it is expanded again. Relative paths start from `base`.
    std::optional<Assignment> assignment(const std::filesystem::path& base);

    /// Steps over an assignment without making it. False where `assignment` would give nothing.
    bool skipAssignment();

    /// The same for text that has been read before; its content is not checked again.
    bool stepOverAssignment();

    const char* position() const noexcept { return text_.data(); }
    bool atEnd() const noexcept { return text_.empty(); }

  private:
    struct Raw {
        char form = 'A';
        AssignOperator op = AssignOperator::Assign;
        AssignModifier modifier = AssignModifier::None;
        std::string_view first;   ///< A: the source text; else the name
        std::string_view second;  ///< R and S: the text
    };

    bool raw(Raw& raw);

    std::string_view text_;
};

}  // namespace Vesk
