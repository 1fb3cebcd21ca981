// Small helpers for text.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// The text without blanks, tabs, line feeds and carriage returns at both ends.
std::string_view trimmed(std::string_view text) noexcept;

std::string lowerCased(std::string_view text);

std::string joined(const std::vector<std::string>& parts, std::string_view separator);

/// "0:07", "1:02:03": hours only if there are any, minutes, seconds.
std::string clockText(std::chrono::steady_clock::duration duration);

/// "1 target", "2 targets".
std::string counted(std::size_t count, std::string_view what);

/// The value of a standard base-10 string-to-integer conversion: blanks, a sign, digits; anything
/// that follows is ignored. Throws std::out_of_range "stoi argument out of range" if the value does
/// not fit 32 bits, std::invalid_argument "invalid stoi argument" if there is no digit.
int leadingInteger(const std::string& text);

/// The candidate that `name` was most likely meant to be, without regard to case: the nearest by
/// edits, at most a third of the name's length (at least one) away. Empty if there is none.
std::string closestName(std::string_view name, const std::vector<std::string>& candidates);

/// "did you mean 'C_FILES' or 'CPP_FILES'?"; takes at least one name.
std::string didYouMean(const std::vector<std::string>& names);

/// "" or "did you mean 'lib'?": the note of a message about an unknown name.
std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace Vesk
