// The file of -o.
#pragma once

#include <string>

#include "types/context/context.h"

namespace Vesk {

/// Writes a line "NAME = text" for each assignment, in the context's order, replacing what the file
/// held. An empty path writes nothing. Throws VeskException when it cannot be written.
void writeOutputFile(const std::string& path, const Context& outputs);

}  // namespace Vesk
