// Who may read a new file.
#pragma once

#include <windows.h>

namespace Vesk::platform {

/// Security attributes of files for this user, the system and its administrators.
class OwnerOnly {
  public:
    OwnerOnly();
    ~OwnerOnly();
    OwnerOnly(const OwnerOnly&) = delete;
    OwnerOnly& operator=(const OwnerOnly&) = delete;

    /// Null, which means those of the directory, where the system tells nothing of the user.
    SECURITY_ATTRIBUTES* attributes() const noexcept;

  private:
    mutable SECURITY_ATTRIBUTES attributes_{};
};

}  // namespace Vesk::platform
