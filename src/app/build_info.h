// How this vesk was built.
#pragma once

#include <string>

namespace Vesk {

/// Version, commit, compiler and libraries, a line each.
std::string buildInfo();

}  // namespace Vesk
