// Reads the lists that C-family targets consist of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/support/command_text.h"
#include "types/context/context.h"

namespace Vesk {

/// The entries of a variable: the elements of a list, the words of a string; a path is one entry.
/// Empty entries and missing variables are left out.
std::vector<std::string> entriesOf(const Context& target, std::string_view variable);

/// A variable of flags. Each element of a list, and a path, is one argument; a string is text that
/// its author has already quoted.
void addFlags(CommandText& command, const Context& target, std::string_view variable);

/// Whether the variable exists and is not empty.
bool hasEntries(const Context& target, std::string_view variable);

}  // namespace Vesk
