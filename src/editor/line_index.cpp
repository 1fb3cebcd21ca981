#include "editor/line_index.h"

#include <algorithm>

namespace Vesk::editor {
namespace {

bool continues(char c) noexcept {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

/// How much a character counts, told by its first byte; only those beyond the first plane take two
/// units of UTF-16.
std::uint32_t unitsOf(char first, ColumnUnit unit) noexcept {
    return unit == ColumnUnit::Utf16 && static_cast<unsigned char>(first) >= 0xF0 ? 2 : 1;
}

}  // namespace

LineIndex::LineIndex(std::string_view text) : starts_{0} {
    for (std::size_t at = text.find_first_of("\r\n"); at != std::string_view::npos;
         at = text.find_first_of("\r\n", at)) {
        at += text.substr(at).starts_with("\r\n") ? 2 : 1;
        starts_.push_back(static_cast<std::uint32_t>(at));
    }
}

std::uint32_t LineIndex::lineOf(std::uint32_t byte) const {
    const auto after = std::ranges::upper_bound(starts_, byte);
    return static_cast<std::uint32_t>(after - starts_.begin() - 1);
}

TextSpan LineIndex::spanOf(std::string_view text, std::uint32_t line) const {
    const auto size = static_cast<std::uint32_t>(text.size());
    if (line >= starts_.size()) {
        return {size, size};
    }
    const std::uint32_t begin = starts_[line];
    const std::size_t end = text.find_first_of("\r\n", begin);
    return {begin, end == std::string_view::npos ? size : static_cast<std::uint32_t>(end)};
}

LinePlace LineIndex::placeOf(std::string_view text, std::uint32_t byte, ColumnUnit unit) const {
    byte = std::min(byte, static_cast<std::uint32_t>(text.size()));
    const std::uint32_t line = lineOf(byte);
    if (unit == ColumnUnit::Utf8) {
        return {line, byte - starts_[line]};
    }
    std::uint32_t column = 0;
    for (std::uint32_t at = starts_[line]; at < byte; ++at) {
        column += continues(text[at]) ? 0 : unitsOf(text[at], unit);
    }
    return {line, column};
}

std::uint32_t LineIndex::byteOf(std::string_view text, LinePlace place, ColumnUnit unit) const {
    const TextSpan line = spanOf(text, place.line);
    if (unit == ColumnUnit::Utf8) {
        return std::min(line.end, line.begin + std::min(place.column, line.size()));
    }
    std::uint32_t at = line.begin;
    for (std::uint32_t column = 0; at < line.end && column < place.column;) {
        column += unitsOf(text[at], unit);
        do {
            ++at;
        } while (at < line.end && continues(text[at]));
    }
    return at;
}

}  // namespace Vesk::editor
