// What a C-family target makes.
#pragma once

#include <string>

#include "types/context/context.h"

namespace Vesk {

enum class OutputType {
    Executable,   ///< the default
    Static,       ///< an archive
    Shared,       ///< a shared library
    Object,       ///< only the objects
    Relocatable,  ///< all objects combined in one
};

/// What OUTPUT_TYPE says. Throws VeskException for an unknown word.
OutputType outputTypeOf(const Context& target);

/// Whether a name has its own suffix: letters follow its last dot, as in "plugin.so" but not in
/// "app-1.2". Such a name is used as it is.
bool hasSuffix(const std::string& name) noexcept;

/// "out/name" with the prefix in front of the last part and the suffix behind it.
std::string decorated(const std::string& name, const std::string& prefix,
                      const std::string& suffix);

}  // namespace Vesk
