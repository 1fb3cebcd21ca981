// From bytes of a text to lines and columns, and back.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "grammar/syntax_tree.h"

namespace Vesk::editor {

/// What a column counts.
enum class ColumnUnit : std::uint8_t { Utf8, Utf16, CodePoints };

/// Both counted from 0.
struct LinePlace {
    std::uint32_t line = 0;
    std::uint32_t column = 0;

    friend bool operator==(const LinePlace&, const LinePlace&) = default;
};

/// Lines end with "\n", "\r\n" or a lone "\r".
class LineIndex {
  public:
    LineIndex() : starts_{0} {}
    explicit LineIndex(std::string_view text);

    std::uint32_t lineCount() const noexcept { return static_cast<std::uint32_t>(starts_.size()); }
    std::uint32_t lineOf(std::uint32_t byte) const;

    /// The bytes of a line without its end; empty behind the last line.
    TextSpan spanOf(std::string_view text, std::uint32_t line) const;

    /// `text` is the one that the index was made of.
    LinePlace placeOf(std::string_view text, std::uint32_t byte, ColumnUnit unit) const;

    /// A place behind a line's end is that end, one behind the last line the text's end.
    std::uint32_t byteOf(std::string_view text, LinePlace place, ColumnUnit unit) const;

  private:
    std::vector<std::uint32_t> starts_;
};

}  // namespace Vesk::editor
