// Texts that may hold anything, for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

/// Appends the text with its control characters shown as "\\x1b": they could move the cursor or
/// change the terminal. Tabs and line ends stay.
void appendPrintable(std::string& out, std::string_view text);

std::string printable(std::string_view text);

/// Without the sequences with which programs colour what they write for a terminal.
std::string withoutEscapes(std::string_view text);

}  // namespace Vesk
