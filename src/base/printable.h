// Texts that may contain anything, made safe for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

/// Appends the text with control characters shown as "\\x1b", since they could move the cursor or
/// change the terminal. Tabs and line ends stay.
void appendPrintable(std::string& out, std::string_view text);

std::string printable(std::string_view text);

/// Removes the sequences with which programs colour their output on a terminal.
std::string withoutEscapes(std::string_view text);

}  // namespace Vesk
