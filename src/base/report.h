// How errors are printed: the text as a message, the notes below it.
#pragma once

#include <exception>
#include <string>

#include "base/exception.h"

namespace Vesk {

/// Prints "Error: " and the error's text, then its notes.
void reportError(const VeskException& error);

/// Prints a standard exception's text alone, then its notes, if any.
void reportError(const std::exception& error);

/// Prints a warning, then the notes that are not empty.
void reportWarning(const std::string& text, const std::vector<std::string>& notes);

}  // namespace Vesk
