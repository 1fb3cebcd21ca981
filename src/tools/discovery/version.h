// Version numbers: dotted numbers, compared as numbers.
#pragma once

#include <compare>
#include <string>
#include <string_view>

namespace Vesk {

/// The digits and dots at the start of a compiler's answer: "12" of "12-posix".
std::string leadingVersion(std::string_view text);

/// 9 comes before 12, 12.2 before 12.10; a missing part counts as 0.
std::strong_ordering compareVersions(std::string_view a, std::string_view b) noexcept;

/// Whether `version` is the requested one or a refinement of it: 12.2.0 fits "12" and "12.2", not
/// "1".
bool versionFits(std::string_view version, std::string_view asked) noexcept;

}  // namespace Vesk
