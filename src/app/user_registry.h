// The registry of the user who runs vesk.
#pragma once

#include <optional>

#include "project/registry.h"

namespace Vesk {

/// Reads the registry when somebody first asks for it, and only then.
class UserRegistry {
  public:
    /// Throws what `userDataDirectory` and `loadRegistry` throw.
    const Registry& read();

    /// Null while nobody has asked for it.
    const Registry* ifRead() const noexcept { return registry_ ? &*registry_ : nullptr; }

  private:
    std::optional<Registry> registry_;
};

}  // namespace Vesk
