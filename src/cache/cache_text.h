// The text of which cache files are made: numbers, strings and assignments.
//
// A number is a line. A string is the line of its length in bytes and then its bytes and a line
// end, so it may hold anything. An assignment is a line with its form, operator and modifier, and
// then strings: its source text (form A), or its name and its text (R: raw string, S: any other).
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

/// False, and nothing appended, for a value that no source text can give back.
bool appendAssignment(std::string& out, const Assignment& assignment);

/// The same; a value that cannot be given back is told by its display text.
void appendComparableAssignment(std::string& out, const Assignment& assignment);

/// Every P"..." that is no raw path literal made one, so that backslashes in it stay.
std::string withRawPathLiterals(std::string_view text);

/// Takes one thing after the other off the front of a text. Each operation is false at something
/// else than it looks for; the position is of no use then.
class CacheReader {
  public:
    explicit CacheReader(std::string_view text) : text_(text) {}

    bool line(std::string_view& content);
    bool number(std::uint64_t& number);
    bool text(std::string_view& content);

    /// The value is final; nothing in it is expanded again. `base`: of relative paths.
    std::optional<Assignment> assignment(const std::filesystem::path& base);

    /// Steps over one without making it; false where `assignment` would give nothing.
    bool skipAssignment();

    /// The same for text that has been read before: what is inside is not looked at again.
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
