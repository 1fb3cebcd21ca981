#include "base/bytes.h"

namespace Vesk {

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
    for (std::uint64_t half : {hash.high, hash.low}) {
        for (std::size_t i = 0; i < sizeof half; ++i, half >>= 8) {
            bytes += static_cast<char>(half);
        }
    }
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
    const std::string_view bytes = take(2 * sizeof(std::uint64_t));
    ContentHash hash;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        std::uint64_t& half = i > sizeof(std::uint64_t) ? hash.low : hash.high;
        half = half << 8 | static_cast<unsigned char>(bytes[i - 1]);
    }
    return hash;
}

}  // namespace Vesk
