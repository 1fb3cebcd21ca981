#include "tools/msvc/architecture.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "tools/discovery/triple.h"

namespace Vesk {

const Architecture& architectureOf(std::string_view triple) {
    const std::string_view machine = triple.substr(0, triple.find('-'));
    const auto found = std::ranges::find_if(kArchitectures, [machine](const Architecture& each) {
        return tripleFits(each.triple, machine);
    });
    if (found == std::end(kArchitectures)) {
        throw VeskException(
            fmt::format("toolchain_target '{}' is not a machine that MSVC makes "
                        "programs for: it begins with x86_64, i686 or aarch64.",
                        triple));
    }
    return *found;
}

}  // namespace Vesk
