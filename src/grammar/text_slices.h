// What a scan of a text finds without the parser: where the targets of a unit file are, and the
// units of a project file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/model.h"

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

/// The units section of a project file. If the parser accepts `rest`, it accepts the whole text,
/// and these are its units.
struct UnitsSection {
    std::vector<UnitEntry> units;
    std::string rest;  ///< the text without the units; everything else is where it was
};

/// Nothing for a text without such a section, or with anything unusual in it.
std::optional<UnitsSection> unitsSectionOf(std::string_view text);

}  // namespace Vesk
