#include "base/ci_string.h"

#include <algorithm>
#include <cstdint>

namespace Vesk {

int compareIgnoringCase(std::string_view a, std::string_view b) noexcept {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (a[i] == b[i]) {
            continue;  // where names are equal at all, their case mostly is, too
        }
        const auto left = static_cast<unsigned char>(asciiLower(a[i]));
        const auto right = static_cast<unsigned char>(asciiLower(b[i]));
        if (left != right) {
            return left < right ? -1 : 1;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return a.size() == b.size() && compareIgnoringCase(a, b) == 0;
}

std::size_t CiHash::operator()(std::string_view text) const noexcept {
    std::uint64_t hash = 0xcbf29ce484222325ULL;  // FNV-1a: names are short
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(asciiLower(c))) * 0x100000001b3ULL;
    }
    return static_cast<std::size_t>(hash);
}

}  // namespace Vesk
