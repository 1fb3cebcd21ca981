#include "platform/system.h"

#include <ctime>

#include "platform/recording.h"

namespace Vesk::platform {

LocalMonth currentLocalMonth() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    const LocalMonth month{local.tm_year + 1900, local.tm_mon + 1};
    record(Question::Month, {}, digestOf(month));
    return month;
}

std::filesystem::path executable() {
    return "/proc/self/exe";
}

}  // namespace Vesk::platform
