#include "platform/system.h"

#include <ctime>

namespace Vesk::platform {

LocalMonth currentLocalMonth() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1};
}

}  // namespace Vesk::platform
