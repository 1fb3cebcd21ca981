#include "driver/target_wishes.h"

#include <fmt/format.h>

#include "base/ci_string.h"
#include "base/exception.h"

namespace Vesk {

bool saysYes(const Context& context, std::string_view variable) {
    const std::string text = context.textOf(variable).value_or("no");
    if (equalsIgnoringCase(text, "yes")) {
        return true;
    }
    if (!text.empty() && !equalsIgnoringCase(text, "no")) {
        throw VeskException(
            fmt::format("Variable '{}' is \"{}\"; write \"yes\" or \"no\".", variable, text));
    }
    return false;
}

}  // namespace Vesk
