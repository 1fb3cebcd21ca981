// Names that the language's files can hold.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

/// The words that CommonLexer.g4 has tokens of their own for; they are no identifiers.
bool isKeyword(std::string_view text) noexcept;

/// The characters of identifiers: letters and "_", and behind the first one digits and "-" as well.
constexpr bool beginsIdentifier(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
constexpr bool isInIdentifier(char c) noexcept {
    return beginsIdentifier(c) || (c >= '0' && c <= '9') || c == '-';
}

/// Whether the grammar reads the text as one identifier.
bool isIdentifier(std::string_view text) noexcept;

/// `text` itself when it is an identifier, else one like it: "my lib" gives "my_lib", "units" gives
/// "units_", "7z" gives "_7z".
std::string identifierFrom(std::string_view text);

}  // namespace Vesk
