// The registry file's text.
#pragma once

#include <string>

#include "project/registry.h"

namespace Vesk {

/// The registry as its file holds it: read back it gives the same model. Comments of `oldText`, the
/// text that is to be replaced, are kept where they stand: before or after the same line; those of
/// lines that are gone come last. Throws VeskException for a value that no literal can hold.
std::string registryText(const Registry& registry, const std::string& oldText = {});

}  // namespace Vesk
