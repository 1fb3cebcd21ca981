// The version of vesk, which the build reads from here too.
#pragma once

namespace Vesk {

inline constexpr const char* kVersion = "3.16.1.0";

}  // namespace Vesk
