#include "grammar/utf8.h"

#include <algorithm>

namespace Vesk {

namespace {

unsigned byteAt(std::string_view text, std::size_t at) noexcept {
    return static_cast<unsigned char>(text[at]);
}

/// How many bytes a sequence with this first byte has; 0 for a byte that starts no sequence.
std::size_t sequenceLength(unsigned first) noexcept {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC2 || first > 0xF4) {
        return 0;
    }
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

/// Whether `second` may follow `first`. Excludes over-long forms, surrogates and anything beyond
/// U+10FFFF.
bool fits(unsigned first, unsigned second) noexcept {
    const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    return second >= low && second <= high;
}

}  // namespace

std::size_t wellFormedUtf8(std::string_view text) noexcept {
    std::size_t at = 0;
    while (at < text.size()) {
        const unsigned first = byteAt(text, at);
        const std::size_t length = sequenceLength(first);
        if (length == 0 || length > text.size() - at) {
            break;
        }
        if (length > 1 && !fits(first, byteAt(text, at + 1))) {
            break;
        }
        if (length > 2 && (byteAt(text, at + 2) & 0xC0U) != 0x80) {
            break;
        }
        if (length > 3 && (byteAt(text, at + 3) & 0xC0U) != 0x80) {
            break;
        }
        at += length;
    }
    return at;
}

std::u32string decodeUtf8(std::string_view text) {
    std::u32string codePoints;
    codePoints.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const unsigned first = byteAt(text, at);
        const std::size_t length = sequenceLength(first);
        // The first byte of a sequence of n bytes (n > 1) has 7 - n bits of the code point.
        char32_t codePoint = length == 1 ? first : first & (0x7FU >> length);
        for (std::size_t i = 1; i < length; ++i) {
            codePoint = (codePoint << 6) | (byteAt(text, at + i) & 0x3FU);
        }
        codePoints += codePoint;
        at += length;
    }
    return codePoints;
}

std::string encodeUtf8(std::u32string_view codePoints) {
    std::string text;
    text.reserve(codePoints.size());
    const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
    for (const char32_t codePoint : codePoints) {
        if (codePoint < 0x80) {
            add(codePoint);
            continue;
        }
        if (codePoint < 0x800) {
            add(0xC0 | (codePoint >> 6));
        } else {
            if (codePoint < 0x10000) {
                add(0xE0 | (codePoint >> 12));
            } else {
                add(0xF0 | (codePoint >> 18));
                add(0x80 | ((codePoint >> 12) & 0x3F));
            }
            add(0x80 | ((codePoint >> 6) & 0x3F));
        }
        add(0x80 | (codePoint & 0x3F));
    }
    return text;
}

bool isAscii(std::string_view text) noexcept {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

}  // namespace Vesk
