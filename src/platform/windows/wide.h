// UTF-8 here, UTF-16 at the system's door.
#pragma once

#include <string>
#include <string_view>

namespace Vesk::platform {

/// What is no UTF-8 becomes U+FFFD.
std::wstring toWide(std::string_view text);

/// An unpaired surrogate becomes U+FFFD.
std::string fromWide(std::wstring_view text);

}  // namespace Vesk::platform
