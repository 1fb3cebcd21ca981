// The text of a unit file, cut between its targets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Vesk {

/// A part of a text and where it begins: line and column, in code points, from 1.
struct TextSlice {
    std::size_t offset = 0;
    std::size_t size = 0;
    std::uint32_t line = 1;
    std::uint32_t column = 1;

    std::string_view in(std::string_view text) const { return text.substr(offset, size); }
};

/// Between them there are only blanks and comments.
struct UnitSlices {
    std::optional<TextSlice> unitLine;
    std::vector<TextSlice> targets;  ///< each up to the brace that ends it
};

/// Knows only where tokens end, as CommonLexer.g4 says; what they amount to, the parser must say of
/// every slice. Nothing for a text in which something is not closed.
std::optional<UnitSlices> slicesOf(std::string_view text);

}  // namespace Vesk
