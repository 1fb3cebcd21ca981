// How errors are printed: their text as a message, their notes below it.
#pragma once

#include <exception>
#include <string>

#include "base/exception.h"

namespace Vesk {

/// Prints "Error: " and the error's text, then its notes.
void reportError(const VeskException& error);

/// Prints a standard exception's text alone, then its notes, if it has any.
void reportError(const std::exception& error);

/// Prints a warning, then the notes that are not empty.
void reportWarning(const std::string& text, const std::vector<std::string>& notes);

}  // namespace Vesk
