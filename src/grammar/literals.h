// Numbers as the language writes them: -12, 0x1F, -0X80.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Vesk {

/// The value of an integer literal; nothing if it is malformed or does not fit 32 bits.
std::optional<std::int32_t> integerLiteral(std::string_view text) noexcept;

/// The value of an index. A negative index must fit 64 bits. Any other may use all 64 bits of
/// magnitude and is then kept as that bit pattern, which selects nothing in any value.
std::optional<std::int64_t> indexLiteral(std::string_view text) noexcept;

}  // namespace Vesk
