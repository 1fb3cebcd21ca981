// What the author of a rejected text most likely meant: habits from shells, C, JSON and other build
// tools.
#pragma once

#include <string>
#include <string_view>

#include "antlr4-runtime.h"

namespace Vesk {

/// How to write what was meant at the place of a recogniser's error, given what its listener gets.
/// Empty if there is nothing to add to the recogniser's own message. `rest` is the file's text from
/// that place on.
std::string hintFor(antlr4::Recognizer* recognizer, const antlr4::Token* offending,
                    std::string_view rest);

}  // namespace Vesk
