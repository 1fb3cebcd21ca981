// Assignments of final values as source text, and a fast way to read them back.
//
// Any parser of the language can read what is written here. The reader here accepts only what is
// written here, in a fraction of the parser's time.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "types/context/assignment.h"

namespace Vesk {

/// "^OBJECTS = [P"(/p/a.o)", P"(/p/b.o)"]". False for a value that no literal can hold.
bool appendPlainAssignment(std::string& out, const Assignment& assignment);

/// Integers, strings, paths and lists of these. Nothing for any other text, which may still be
/// valid.
std::optional<Assignment> readPlainAssignment(std::string_view text);

}  // namespace Vesk
