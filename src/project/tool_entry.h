// What a tool's declaration says about itself.
#pragma once

#include <optional>
#include <string>

#include "grammar/model.h"
#include "types/context/context.h"

namespace Vesk {

/// The tool's type. Throws VeskException when it has none, an empty one or more than one.
std::string toolTypeOf(const ToolEntry& tool);

/// The value of "toolchain_name"; nothing without one. Throws VeskException for a null context.
std::optional<std::string> toolchainNameOf(const Context* context);
std::optional<std::string> toolchainNameOf(const ToolEntry& tool);

}  // namespace Vesk
