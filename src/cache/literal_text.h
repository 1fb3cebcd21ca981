// Assignments of final values as source text, and the quick way back.
//
// What is written here any parser of the language reads; what is read here is only what is written
// here, and it takes a fraction of the parser's time.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "types/context/assignment.h"

namespace Vesk {

/// "^OBJECTS = [P"(/p/a.o)", P"(/p/b.o)"]". False for a value that no literal can hold.
bool appendPlainAssignment(std::string& out, const Assignment& assignment);

/// Integers, strings, paths and lists of these. Nothing for other text: it may still be valid.
std::optional<Assignment> readPlainAssignment(std::string_view text);

}  // namespace Vesk
