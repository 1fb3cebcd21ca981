#include "testing/test_names.h"

#include <string>

#include "base/text.h"

namespace Vesk {
namespace {

/// Goes back to the last `*` only, so it takes at most as many steps as the product of the lengths.
bool fits(std::string_view text, std::string_view pattern) noexcept {
    std::size_t at = 0;
    std::size_t inPattern = 0;
    std::size_t afterStar = std::string_view::npos;
    std::size_t starTook = 0;
    while (at < text.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == '*') {
            afterStar = ++inPattern;
            starTook = at;
        } else if (inPattern < pattern.size() &&
                   (pattern[inPattern] == '?' || pattern[inPattern] == text[at])) {
            ++inPattern;
            ++at;
        } else if (afterStar != std::string_view::npos) {
            inPattern = afterStar;
            at = ++starTook;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', inPattern) == std::string_view::npos;
}

}  // namespace

bool testNameFits(std::string_view unit, std::string_view target, std::string_view pattern) {
    const std::string name = pattern.find("::") == std::string_view::npos
                                 ? std::string(target)
                                 : std::string(unit).append("::").append(target);
    return fits(lowerCased(name), lowerCased(pattern));
}

}  // namespace Vesk
