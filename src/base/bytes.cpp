#include "base/bytes.h"

#include <array>

namespace Vesk {
namespace {

/// Eight bytes, the lowest first.
std::uint64_t numberAt(const char* bytes) noexcept {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        number |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])) << 8 * i;
    }
    return number;
}

}  // namespace

/// Seven bits a byte, the lowest first; all but the last byte have the eighth set.
void Encoder::number(std::uint64_t number) {
    constexpr std::uint64_t kMore = 0x80;
    for (; number >= kMore; number >>= 7) {
        bytes += static_cast<char>(number | kMore);
    }
    bytes += static_cast<char>(number);
}

void Encoder::piece(std::string_view piece) {
    number(piece.size());
    bytes += piece;
}

void Encoder::hash(const ContentHash& hash) {
    std::array<char, 2 * sizeof(std::uint64_t)> digits;
    for (std::size_t i = 0; i < sizeof(std::uint64_t); ++i) {
        digits[i] = static_cast<char>(hash.high >> 8 * i);
        digits[i + sizeof(std::uint64_t)] = static_cast<char>(hash.low >> 8 * i);
    }
    bytes.append(digits.data(), digits.size());
}

std::string_view Decoder::take(std::size_t size) {
    if (size > rest_.size()) {
        good_ = false;
        rest_ = {};
        return {};
    }
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
}

std::uint64_t Decoder::number() {
    if (!rest_.empty() && static_cast<unsigned char>(rest_.front()) < 0x80U) {  // nearly always
        const auto number = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return number;
    }
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
        const std::string_view byte = take(1);
        if (byte.empty()) {
            return 0;
        }
        const auto bits = static_cast<unsigned char>(byte.front());
        number |= static_cast<std::uint64_t>(bits & 0x7FU) << shift;
        if (bits < 0x80U) {
            return number;
        }
    }
    good_ = false;
    return 0;
}

std::string_view Decoder::piece() {
    return take(number());
}

ContentHash Decoder::hash() {
    constexpr std::size_t kHalf = sizeof(std::uint64_t);
    const std::string_view bytes = take(2 * kHalf);
    return bytes.empty() ? ContentHash()
                         : ContentHash{numberAt(bytes.data()), numberAt(bytes.data() + kHalf)};
}

}  // namespace Vesk
