// Reading the lists that C-family targets are made of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/support/command_text.h"
#include "types/context/context.h"

namespace Vesk {

/// The entries of a variable: the elements of a list, the words of a string; a path is one entry.
/// Empty entries are left out, and so is a variable that is missing.
std::vector<std::string> entriesOf(const Context& target, std::string_view variable);

/// A variable of flags: each element of a list, and a path, is one argument; a string is text that
/// its author has quoted already.
void addFlags(CommandText& command, const Context& target, std::string_view variable);

/// Whether the variable is there and holds something.
bool hasEntries(const Context& target, std::string_view variable);

}  // namespace Vesk
