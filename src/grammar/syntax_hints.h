// What somebody most likely meant who wrote what the parser refuses: habits from shells, C, JSON
// and other build tools.
#pragma once

#include <string>
#include <string_view>

#include "antlr4-runtime.h"

namespace Vesk {

/// How to write what is meant where a recogniser met an error, as its listener is told; empty when
/// there is nothing to say beyond the recogniser's own message. `rest` is the file's text from the
/// error's place on.
std::string hintFor(antlr4::Recognizer* recognizer, const antlr4::Token* offending,
                    std::string_view rest);

}  // namespace Vesk
