// The arguments of a child program, as UTF-8, and its standard output, byte for byte.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/console.h"

namespace Vesk::test {

using Arguments = std::vector<std::string>;

/// The command line as the system holds it: on Windows the very text, elsewhere the arguments,
/// each in angle brackets.
std::string wholeCommandLine(const Arguments& arguments);

/// Writes to standard output at once.
inline void put(std::string_view text) {
    platform::writeBytes(platform::Stream::Output, text);
}

/// What the program does; the arguments are without the program's own name.
int run(const Arguments& arguments);

}  // namespace Vesk::test
