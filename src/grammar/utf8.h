// UTF-8 and code points.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Vesk {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The length in bytes of the longest prefix of `text` that is well-formed UTF-8.
std::size_t wellFormedUtf8(std::string_view text) noexcept;

/// The code points of well-formed UTF-8.
std::u32string decodeUtf8(std::string_view text);

std::string encodeUtf8(std::u32string_view codePoints);

/// Whether every byte is below 0x80.
bool isAscii(std::string_view text) noexcept;

}  // namespace Vesk
