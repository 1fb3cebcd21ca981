#include "tools/discovery/version.h"

#include <charconv>
#include <cstdint>

namespace Vesk {

namespace {

/// Takes the number before the next dot off the text; 0 if there is none.
std::uint64_t takePart(std::string_view& text) noexcept {
    const std::string_view part = text.substr(0, text.find('.'));
    text.remove_prefix(part.size() < text.size() ? part.size() + 1 : text.size());
    std::uint64_t number = 0;
    std::from_chars(part.data(), part.data() + part.size(), number);
    return number;
}

}  // namespace

std::string leadingVersion(std::string_view text) {
    std::string_view version = text.substr(0, text.find_first_not_of("0123456789."));
    version = version.substr(0, version.find_last_not_of('.') + 1);
    return std::string(version);
}

std::strong_ordering compareVersions(std::string_view a, std::string_view b) noexcept {
    while (!a.empty() || !b.empty()) {
        const auto order = takePart(a) <=> takePart(b);
        if (order != std::strong_ordering::equal) {
            return order;
        }
    }
    return std::strong_ordering::equal;
}

bool versionFits(std::string_view version, std::string_view asked) noexcept {
    while (!asked.empty()) {
        if (version.empty() || takePart(version) != takePart(asked)) {
            return false;
        }
    }
    return true;
}

}  // namespace Vesk
