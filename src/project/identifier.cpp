#include "project/identifier.h"

#include <algorithm>
#include <array>

namespace Vesk {
namespace {

constexpr std::array<std::string_view, 8> kKeywords = {
    "unit", "if", "import", "units", "profiles", "projects", "tools", "name",
};

bool isLetter(char c) noexcept {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool isFollowing(char c) noexcept {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '-';
}

bool isKeyword(std::string_view text) noexcept {
    return std::find(kKeywords.begin(), kKeywords.end(), text) != kKeywords.end();
}

}  // namespace

bool isIdentifier(std::string_view text) noexcept {
    return !text.empty() && isLetter(text.front()) &&
           std::all_of(text.begin(), text.end(), isFollowing) && !isKeyword(text);
}

std::string identifierFrom(std::string_view text) {
    std::string result;
    bool inForeignLetter = false;
    for (const char c : text) {
        // All bytes of a letter outside ASCII together give one "_".
        const bool foreign = static_cast<unsigned char>(c) >= 0x80;
        if (isFollowing(c)) {
            result += c;
        } else if (!inForeignLetter || (static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            result += '_';
        }
        inForeignLetter = foreign;
    }
    if (result.empty() || !isLetter(result.front())) {
        result.insert(result.begin(), '_');
    }
    return isKeyword(result) ? result + '_' : result;
}

}  // namespace Vesk
