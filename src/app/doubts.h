// What a command line says that was most probably not meant.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Vesk {

/// What becomes of it.
enum class Doubts : std::uint8_t {
    Warn,
    Refuse,  ///< with --strict: nothing is built
};

/// Prints a warning with its notes, or throws them as a VeskException.
void reportDoubt(Doubts doubts, const std::string& text, const std::vector<std::string>& notes);

}  // namespace Vesk
