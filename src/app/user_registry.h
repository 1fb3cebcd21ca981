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

    /// In this run it also counts for those who could do without.
    void offer() noexcept { isOffered_ = true; }
    bool isOffered() const noexcept { return isOffered_; }

  private:
    std::optional<Registry> registry_;
    bool isOffered_ = false;
};

}  // namespace Vesk
