#include "types/context/held_appends.h"

#include <algorithm>

#include "base/ci_string.h"

namespace Vesk {

bool HeldAppends::has(std::string_view name) const {
    return std::ranges::any_of(held_, [name](const HeldAppend& held) {
        return equalsIgnoringCase(held.assignment.name, name);
    });
}

void HeldAppends::drop(std::string_view name) {
    std::erase_if(held_, [name](const HeldAppend& held) {
        return equalsIgnoringCase(held.assignment.name, name);
    });
}

}  // namespace Vesk
