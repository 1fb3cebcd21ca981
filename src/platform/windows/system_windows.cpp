#include "platform/system.h"

#include <windows.h>

namespace Vesk::platform {

LocalMonth currentLocalMonth() {
    SYSTEMTIME local{};
    ::GetLocalTime(&local);
    return {local.wYear, local.wMonth};
}

}  // namespace Vesk::platform
