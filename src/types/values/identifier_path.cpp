#include "types/values/identifier_path.h"

#include <charconv>
#include <fmt/format.h>
#include <utility>

namespace Vesk {
namespace {

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c) noexcept {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// A recursive-descent parser for one text. The first failure is recorded and ends the parse.
class PathParser {
  public:
    PathParser(std::string_view text, ParseError& error) : text_(text), error_(error) {}

    std::size_t position() const noexcept { return at_; }
    const std::vector<std::size_t>& places() const noexcept { return places_; }

    /// path := segment ("." segment)*
    bool path(IdentifierPath& out, char terminator, std::size_t depth) {
        if (depth > kMaxIndexNesting) {
            return fail("Index brackets nest too deep");
        }
        while (true) {
            IdentifierSegment segment;
            if (depth == 0) {
                places_.push_back(at_);
            }
            if (!this->segment(segment, depth)) {
                return false;
            }
            out.segments.push_back(std::move(segment));
            if (peek() != '.') {
                return true;
            }
            ++at_;
            if (atEnd() || (terminator != '\0' && peek() == terminator)) {
                return fail("Expected identifier segment after '.'");
            }
        }
    }

  private:
    bool atEnd() const noexcept { return at_ >= text_.size(); }
    char peek() const noexcept { return atEnd() ? '\0' : text_[at_]; }

    bool fail(const char* message) {
        error_ = ParseError(at_, message);
        return false;
    }

    /// segment := name ("[" index "]")*
    bool segment(IdentifierSegment& out, std::size_t depth) {
        if (!name(out.name)) {
            return false;
        }
        while (peek() == '[') {
            ++at_;
            PathIndex index;
            if (!this->index(index, depth)) {
                return false;
            }
            if (peek() != ']') {
                return fail("Expected ']'");
            }
            ++at_;
            out.keys.push_back(std::move(index));
        }
        return true;
    }

    bool name(std::string& out) {
        if (atEnd()) {
            return fail("Unexpected end while parsing name");
        }
        if (!isLetter(peek())) {
            return fail("Invalid identifier start");
        }
        const std::size_t start = at_;
        while (!atEnd() && (isLetter(peek()) || isDigit(peek()))) {
            ++at_;
        }
        out = text_.substr(start, at_ - start);
        return true;
    }

    /// index := number | number ".." number | "'" name "'" | path
    bool index(PathIndex& out, std::size_t depth) {
        if (atEnd()) {
            return fail("Unexpected end inside '[]'");
        }
        if (isDigit(peek())) {
            return numberOrRange(out);
        }
        if (peek() == '\'') {
            return quotedName(out);
        }
        if (isLetter(peek())) {
            auto nested = std::make_shared<IdentifierPath>();
            if (!path(*nested, ']', depth + 1)) {
                return false;
            }
            out = std::move(nested);
            return true;
        }
        return fail("Invalid index expression inside '[]'");
    }

    bool numberOrRange(PathIndex& out) {
        std::int64_t first = 0;
        if (!number(first)) {
            return false;
        }
        if (text_.substr(at_, 2) != "..") {
            out = first;
            return true;
        }
        at_ += 2;
        std::int64_t second = 0;
        if (!number(second)) {
            return false;
        }
        out = PathRange{first, second};
        return true;
    }

    bool number(std::int64_t& out) {
        if (!isDigit(peek())) {
            return fail("Expected number");
        }
        int base = 10;
        if (peek() == '0' && at_ + 1 < text_.size() && (text_[at_ + 1] | 0x20) == 'x') {
            base = 16;
            at_ += 2;
            if (!isHexDigit(peek())) {
                return fail("Expected hexadecimal digit");
            }
        }
        const char* const first = text_.data() + at_;
        const auto [last, status] = std::from_chars(first, text_.data() + text_.size(), out, base);
        if (status != std::errc{}) {
            return fail("Invalid or out-of-range number");
        }
        at_ += static_cast<std::size_t>(last - first);
        return true;
    }

    bool quotedName(PathIndex& out) {
        const std::size_t end = text_.find_first_of("'\r\n", at_ + 1);
        if (end == std::string_view::npos || text_[end] != '\'') {
            at_ = end == std::string_view::npos ? text_.size() : end;
            return fail("Expected closing apostrophe in index name");
        }
        out = PathName{std::string(text_.substr(at_ + 1, end - at_ - 1))};
        at_ = end + 1;
        return true;
    }

    std::string_view text_;
    ParseError& error_;
    std::size_t at_ = 0;
    std::vector<std::size_t> places_;  ///< of the outermost segments
};

struct IndexText {
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(const PathRange& range) const {
        return fmt::format("{}..{}", range.start, range.end);
    }
    std::string operator()(const PathName& name) const { return "'" + name.name + "'"; }
    std::string operator()(const std::shared_ptr<const IdentifierPath>& path) const {
        return path->toDisplayString();
    }
    std::string operator()(const PathRegex& regex) const { return "R\"(" + regex.pattern + ")\""; }
};

}  // namespace

IdentifierPath IdentifierPath::ofName(std::string name) {
    return IdentifierPath({IdentifierSegment{std::move(name), {}}});
}

std::vector<std::string> IdentifierPath::elementTexts() const {
    std::vector<std::string> texts;
    texts.reserve(segments.size());
    for (const IdentifierSegment& segment : segments) {
        std::string text = segment.name;
        for (const PathIndex& key : segment.keys) {
            text += "[" + std::visit(IndexText{}, key) + "]";
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

std::string IdentifierPath::toDisplayString() const {
    std::string text;
    for (const std::string& element : elementTexts()) {
        text += (text.empty() ? "" : ".") + element;
    }
    return text;
}

bool parseIdentifierPath(std::string_view text, IdentifierPath& path, ParseError& error,
                         std::size_t* end) {
    path.segments.clear();
    if (text.empty()) {
        error = ParseError(0, "Empty identifier");
        return false;
    }
    PathParser parser(text, error);
    const bool parsed = parser.path(path, '\0', 0);
    if (parsed && end != nullptr) {
        *end = parser.position();
    }
    return parsed;
}

std::vector<std::size_t> segmentPlaces(std::string_view text) {
    IdentifierPath path;
    ParseError error;
    PathParser parser(text, error);
    const bool parsed = parser.path(path, '\0', 0);
    std::vector<std::size_t> places = parser.places();
    places.resize(parsed ? places.size() : path.segments.size());
    return places;
}

IdentifierPath identifierPathFrom(std::string_view text) {
    IdentifierPath path;
    ParseError error;
    std::size_t end = 0;
    if (parseIdentifierPath(text, path, error, &end) && end < text.size()) {
        error = ParseError(end,
                           "Unexpected text after the variable's name (a name with other "
                           "characters than letters, digits and '_' needs an alias or a variable)");
    } else if (error.message.empty()) {
        return path;
    }
    error.addNote("in '" + std::string(text) + "' at byte " + std::to_string(error.position + 1));
    throw error;
}

}  // namespace Vesk
