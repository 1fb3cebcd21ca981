// What a C-family target makes.
#pragma once

#include <string>

#include "types/context/context.h"

namespace Vesk {

enum class OutputType {
    Executable,   ///< the default
    Static,       ///< an archive
    Shared,       ///< a shared library
    Object,       ///< nothing but the objects
    Relocatable,  ///< all objects in one
};

/// What OUTPUT_TYPE says. Throws VeskException for an unknown word.
OutputType outputTypeOf(const Context& target);

/// Whether a name has an ending of its own: letters follow its last dot, as in "plugin.so" and not
/// in "app-1.2". Such a name is taken as it is.
bool hasEnding(const std::string& name) noexcept;

/// "out/name" with the prefix in front of the last part and the ending behind it.
std::string decorated(const std::string& name, const std::string& prefix,
                      const std::string& ending);

}  // namespace Vesk
