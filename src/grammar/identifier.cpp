#include "grammar/identifier.h"

#include <algorithm>
#include <array>

namespace Vesk {
namespace {

constexpr std::array<std::string_view, 8> kKeywords = {
    "unit", "if", "import", "units", "profiles", "projects", "tools", "name",
};

}  // namespace

bool isKeyword(std::string_view text) noexcept {
    return std::find(kKeywords.begin(), kKeywords.end(), text) != kKeywords.end();
}

bool isIdentifier(std::string_view text) noexcept {
    return !text.empty() && beginsIdentifier(text.front()) &&
           std::all_of(text.begin(), text.end(), isInIdentifier) && !isKeyword(text);
}

std::string identifierFrom(std::string_view text) {
    std::string result;
    bool inForeignLetter = false;
    for (const char c : text) {
        // All bytes of a letter outside ASCII together give one "_".
        const bool foreign = static_cast<unsigned char>(c) >= 0x80;
        if (isInIdentifier(c)) {
            result += c;
        } else if (!inForeignLetter || (static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            result += '_';
        }
        inForeignLetter = foreign;
    }
    if (result.empty() || !beginsIdentifier(result.front())) {
        result.insert(result.begin(), '_');
    }
    return isKeyword(result) ? result + '_' : result;
}

}  // namespace Vesk
