#include "platform/system.h"

#include <string>
#include <windows.h>

#include "platform/recording.h"

namespace Vesk::platform {

LocalMonth currentLocalMonth() {
    SYSTEMTIME local{};
    ::GetLocalTime(&local);
    const LocalMonth month{local.wYear, local.wMonth};
    record(Question::Month, {}, digestOf(month));
    return month;
}

std::filesystem::path executable() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD size =
            ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (size < path.size()) {
            path.resize(size);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace Vesk::platform
