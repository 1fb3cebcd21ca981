// Expansion of references in strings.
//
// ${name} is replaced by the named value's text. #{name} multiplies the string: one text for each
// element of the named value, and every combination when there are several references, the leftmost
// varying slowest. A reference that occurs twice is one list: "cc #{f}.c -o #{f}.o" gives one text
// for each element.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "types/values/value.h"

namespace Vesk {

/// One expansion may follow at most this many references.
inline constexpr std::size_t kMaxExpansionReferences = 100'000;

/// References may lead to other references at most this many times.
inline constexpr std::size_t kMaxReferenceDepth = 500;

/// The text with every ${} reference replaced. `inProgress` holds the names that are being
/// expanded. A reference to an unknown variable becomes empty and is reported to the resolver.
/// Throws VeskException for unbalanced braces and for texts beyond the limits (see value_size.h),
/// ParseError for a malformed path, CircularReference for a name that leads back to itself.
std::string expandVariables(const std::string& text, Resolver& resolver,
                            std::unordered_set<std::string>& inProgress);

/// The result of expanding a text.
struct Expanded {
    std::vector<std::string> texts;  ///< exactly one, unless it is a list
    bool isList = false;             ///< the text has #{} references
};

/// Replaces the #{} references. Throws as above, and as the resolver does for unknown variables.
Expanded expandCross(const std::string& text, Resolver& resolver);

/// Both in this order: the expansion of a whole string.
Expanded expandText(const std::string& text, Resolver& resolver);

/// The value that a path names. For a variable that does not exist, tells the resolver and returns
/// an empty pointer. Throws CircularReference.
ValuePtr valueOrReport(const IdentifierPath& path, Resolver& resolver);

/// A reference in a text: what stands between its braces.
struct TextReference {
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Those of both kinds that are closed, in order.
std::vector<TextReference> referencesIn(std::string_view text);

/// Whether the text is a single reference, "${path}", and nothing else.
bool isSingleReference(std::string_view text) noexcept;

}  // namespace Vesk
