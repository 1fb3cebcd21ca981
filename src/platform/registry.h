// The registry of Windows. Other systems have none: there nothing is ever found.
#pragma once

#include <optional>
#include <string>

namespace Vesk::platform {

/// Programs of 32 and of 64 bits see different keys under some names.
enum class RegistryView { Bits32, Bits64 };

/// A text value of a key of the whole machine, "SOFTWARE\Microsoft\...", with its references to
/// environment variables replaced. Nothing when there is no such value or when it is no text.
std::optional<std::string> registryText(const std::string& key, const std::string& name,
                                        RegistryView view);

}  // namespace Vesk::platform
