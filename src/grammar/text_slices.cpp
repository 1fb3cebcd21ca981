#include "grammar/text_slices.h"

#include <algorithm>
#include <utility>

#include "grammar/identifier.h"

namespace Vesk {
namespace {

constexpr std::string_view kUnitKeyword = "unit";
constexpr std::string_view kUnitsKeyword = "units";

bool isBlank(char c) noexcept {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c) noexcept {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool beginsCodePoint(char c) noexcept {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
}

class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    std::optional<UnitSlices> slices() {
        UnitSlices found;
        if (!skipBlanks() || !takeUnitLine(found)) {
            return std::nullopt;
        }
        while (at_ < text_.size()) {
            const std::size_t start = at_;
            if (!skipTarget()) {
                return std::nullopt;
            }
            found.targets.push_back(sliceFrom(start));
            if (!skipBlanks()) {
                return std::nullopt;
            }
        }
        return found;
    }

    std::optional<UnitsSection> unitsSection() {
        std::size_t open = 0;
        while (skipBlanks() && at_ < text_.size()) {
            const std::size_t start = at_;
            if (!skipToken()) {
                break;
            }
            const std::string_view token = text_.substr(start, at_ - start);
            if (open == 0 && token == kUnitsKeyword) {
                return takeUnitsSection();
            }
            open += token == "{" ? 1 : 0;
            open -= token == "}" && open > 0 ? 1 : 0;
        }
        return std::nullopt;
    }

  private:
    char ahead(std::size_t count = 0) const noexcept {
        return at_ + count < text_.size() ? text_[at_ + count] : '\0';
    }

    template <class Predicate>
    void skipWhile(Predicate fits) {
        while (at_ < text_.size() && fits(text_[at_])) {
            ++at_;
        }
    }

    /// To behind the next `end` from a place on; false, and nothing skipped, without one.
    bool skipPast(std::string_view end, std::size_t from) {
        const std::size_t found = text_.find(end, from);
        if (found == std::string_view::npos) {
            return false;
        }
        at_ = found + end.size();
        return true;
    }

    /// Blanks and comments; false for a comment without an end.
    bool skipBlanks() {
        for (;;) {
            skipWhile(isBlank);
            if (ahead() == '/' && ahead(1) == '/') {
                at_ = std::min(text_.find_first_of("\r\n", at_), text_.size());
            } else if (ahead() != '/' || ahead(1) != '*') {
                return true;
            } else if (!skipPast("*/", at_ + 2)) {
                return false;
            }
        }
    }

    /// An index may not go on in the next line.
    bool skipIndexName() {
        const std::size_t end = text_.find_first_of("'\r\n", at_ + 1);
        if (end == std::string_view::npos || text_[end] != '\'') {
            return false;
        }
        at_ = end + 1;
        return true;
    }

    void skipNumber() {
        if (ahead() == '0' && (ahead(1) == 'x' || ahead(1) == 'X') && isHexDigit(ahead(2))) {
            at_ += 2;
            skipWhile(isHexDigit);
        } else {
            skipWhile(isDigit);
        }
    }

    /// A raw string's letter that nothing follows is a name.
    void skipNameOrRawString() {
        const bool raw = (ahead() == 'R' || ahead() == 'P') && ahead(1) == '"' && ahead(2) == '(';
        if (!raw || !skipPast(")\"", at_ + 3)) {
            skipWhile(isInIdentifier);
        }
    }

    /// Operators of several characters may be taken apart here. False for a string without an end.
    bool skipToken() {
        const char first = ahead();
        if (first == '"') {
            return skipPast("\"", at_ + 1);
        }
        if (first == '\'') {
            return skipIndexName();
        }
        if (beginsIdentifier(first)) {
            skipNameOrRawString();
        } else if (isDigit(first)) {
            skipNumber();
        } else {
            ++at_;
        }
        return true;
    }

    bool takeUnitLine(UnitSlices& found) {
        const std::size_t start = at_;
        skipWhile(isInIdentifier);
        if (text_.substr(start, at_ - start) != kUnitKeyword) {
            at_ = start;
            return true;
        }
        if (!skipBlanks() || !beginsIdentifier(ahead())) {
            return false;
        }
        skipWhile(isInIdentifier);
        found.unitLine = sliceFrom(start);
        return skipBlanks();
    }

    bool skipTarget() {
        for (std::size_t open = 0; at_ < text_.size();) {
            const char first = ahead();
            if (!skipToken()) {
                return false;
            }
            open += first == '{' ? 1 : 0;
            if (first == '}' && (open == 0 || --open == 0)) {
                return true;
            }
            if (!skipBlanks()) {
                return false;
            }
        }
        return false;
    }

    std::optional<UnitsSection> takeUnitsSection() {
        if (!skipBlanks() || ahead() != '{') {
            return std::nullopt;
        }
        const std::size_t start = ++at_;
        UnitsSection section;
        while (skipBlanks() && beginsIdentifier(ahead())) {
            if (!takeUnit(section.units.emplace_back())) {
                return std::nullopt;
            }
        }
        if (ahead() != '}') {
            return std::nullopt;
        }
        section.rest = withoutPart(start, at_);
        return section;
    }

    bool takeUnit(UnitEntry& unit) {
        const std::size_t start = at_;
        skipWhile(isInIdentifier);
        unit.name = text_.substr(start, at_ - start);
        unit.line = sliceFrom(start).line;
        if (isKeyword(unit.name) || !skipBlanks() || ahead() != '{') {
            return false;
        }
        ++at_;
        while (skipBlanks() && ahead() == '"') {
            const std::size_t path = at_ + 1;
            if (!skipPast("\"", path)) {
                return false;
            }
            unit.files.emplace_back(text_.substr(path, at_ - 1 - path));
        }
        return std::exchange(at_, at_ + 1) < text_.size() && text_[at_ - 1] == '}';
    }

    /// The text with blanks in place of a part; lines and columns behind it stay what they are.
    std::string withoutPart(std::size_t start, std::size_t end) const {
        std::string rest(text_.substr(0, start));
        const std::string_view part = text_.substr(start, end - start);
        const std::string_view lastLine = part.substr(part.rfind('\n') + 1);
        rest.append(static_cast<std::size_t>(std::ranges::count(part, '\n')), '\n');
        rest.append(static_cast<std::size_t>(std::ranges::count_if(lastLine, beginsCodePoint)),
                    ' ');
        rest += text_.substr(end);
        return rest;
    }

    /// From there to where the scanner is. Starts come in order, so lines are counted once.
    TextSlice sliceFrom(std::size_t start) {
        for (std::size_t end; (end = text_.find('\n', lineStart_)) < start;) {
            lineStart_ = end + 1;
            ++line_;
        }
        const std::string_view before = text_.substr(lineStart_, start - lineStart_);
        const auto column = std::ranges::count_if(before, beginsCodePoint) + 1;
        return {start, at_ - start, line_, static_cast<std::uint32_t>(column)};
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t lineStart_ = 0;
    std::uint32_t line_ = 1;
};

}  // namespace

std::optional<UnitSlices> slicesOf(std::string_view text) {
    return Scanner(text).slices();
}

std::optional<UnitsSection> unitsSectionOf(std::string_view text) {
    return Scanner(text).unitsSection();
}

}  // namespace Vesk
