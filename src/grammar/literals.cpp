#include "grammar/literals.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace Vesk {

namespace {

struct SignedMagnitude {
    bool negative = false;
    std::uint64_t magnitude = 0;
};

std::optional<SignedMagnitude> readNumber(std::string_view text) noexcept {
    SignedMagnitude number;
    if (text.starts_with('-')) {
        number.negative = true;
        text.remove_prefix(1);
    }
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number.magnitude, base);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return number;
}

/// The negative number with that magnitude. Unsigned arithmetic, so that the smallest number works
/// too.
std::int64_t negated(std::uint64_t magnitude) noexcept {
    return static_cast<std::int64_t>(std::uint64_t{0} - magnitude);
}

}  // namespace

std::optional<std::int32_t> integerLiteral(std::string_view text) noexcept {
    constexpr std::uint64_t kMax = std::numeric_limits<std::int32_t>::max();
    const auto number = readNumber(text);
    if (!number || number->magnitude > (number->negative ? kMax + 1 : kMax)) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(number->negative
                                         ? negated(number->magnitude)
                                         : static_cast<std::int64_t>(number->magnitude));
}

std::optional<std::int64_t> indexLiteral(std::string_view text) noexcept {
    constexpr std::uint64_t kMaxNegative = std::uint64_t{1} << 63;
    const auto number = readNumber(text);
    if (!number || (number->negative && number->magnitude > kMaxNegative)) {
        return std::nullopt;
    }
    return number->negative ? negated(number->magnitude)
                            : static_cast<std::int64_t>(number->magnitude);
}

}  // namespace Vesk
