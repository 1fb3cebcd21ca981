// Choosing tests by their names.
#pragma once

#include <string_view>

namespace Vesk {

/// Whether a pattern fits a test. `*` stands for any characters, `?` for one; case does not matter.
/// A pattern with "::" is for "unit::target", another one for the target alone.
bool testNameFits(std::string_view unit, std::string_view target, std::string_view pattern);

}  // namespace Vesk
