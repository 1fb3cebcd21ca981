#include "platform/windows/wide.h"

#include <windows.h>

namespace Vesk::platform {

std::wstring toWide(std::string_view text) {
    const int size = static_cast<int>(text.size());
    const int needed = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), needed);
    return wide;
}

std::string fromWide(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    const int needed =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}

}  // namespace Vesk::platform
