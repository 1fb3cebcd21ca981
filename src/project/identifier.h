// Names that the language's files can hold.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

/// Whether the grammar reads the text as one identifier: letters, digits, "_" and "-", beginning
/// with a letter or "_", and no keyword.
bool isIdentifier(std::string_view text) noexcept;

/// `text` itself when it is an identifier, else one like it: "my lib" gives "my_lib", "units" gives
/// "units_", "7z" gives "_7z".
std::string identifierFrom(std::string_view text);

}  // namespace Vesk
