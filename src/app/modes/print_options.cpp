#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "app/modes/modes.h"
#include "app/options.h"
#include "base/console.h"

namespace Vesk::modes {
namespace {

std::size_t widthOfSynopses() {
    std::size_t width = 0;
    for (const Option& option : options()) {
        width = std::max(width, synopsis(option).size());
    }
    return width;
}

}  // namespace

int printOptions(const Settings& /*settings*/) {
    const std::size_t width = widthOfSynopses();
    std::string_view section;
    for (const Option& option : options()) {
        if (option.section.empty()) {
            continue;
        }
        if (option.section != section) {
            section = option.section;
            console::normal("{}", section);
        }
        console::normal("  {:{}}  {}", synopsis(option), width, option.meaning);
    }
    return 0;
}

}  // namespace Vesk::modes
