#include "platform/windows/extended_path.h"

#include <windows.h>

namespace Vesk::platform {

std::wstring extendedPath(const std::filesystem::path& path) {
    // Directories have a lower limit than files: room for an 8.3 name must remain.
    constexpr std::size_t kSafeLength = 240;
    const std::wstring& text = path.native();
    if (text.size() < kSafeLength || text.starts_with(LR"(\\?\)")) {
        return text;
    }
    const DWORD needed = ::GetFullPathNameW(text.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    full.resize(::GetFullPathNameW(text.c_str(), needed, full.data(), nullptr));
    if (full.starts_with(LR"(\\)")) {
        return LR"(\\?\UNC)" + full.substr(1);
    }
    return LR"(\\?\)" + full;
}

}  // namespace Vesk::platform
