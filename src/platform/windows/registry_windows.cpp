#include "platform/registry.h"

#include <windows.h>

#include "platform/recording.h"
#include "platform/windows/wide.h"

namespace Vesk::platform {

namespace {

std::optional<std::string> textIn(HKEY key, const std::wstring& name) {
    std::wstring text(MAX_PATH, L'\0');
    for (;;) {
        auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        const LSTATUS status =
            ::RegGetValueW(key, nullptr, name.c_str(), RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
        if (status == ERROR_MORE_DATA) {
            text.resize(text.size() * 2);  // expanded text can be longer than the system says
            continue;
        }
        if (status != ERROR_SUCCESS) {
            return std::nullopt;
        }
        text.resize(text.find(L'\0'));
        return fromWide(text);
    }
}

std::optional<std::string> textAt(const std::string& key, const std::string& name,
                                  RegistryView view) {
    const REGSAM bits = view == RegistryView::Bits32 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
    HKEY opened = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, toWide(key).c_str(), 0, KEY_QUERY_VALUE | bits,
                        &opened) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::optional<std::string> text = textIn(opened, toWide(name));
    ::RegCloseKey(opened);
    return text;
}

}  // namespace

std::optional<std::string> registryText(const std::string& key, const std::string& name,
                                        RegistryView view) {
    auto text = textAt(key, name, view);
    recordRegistry(key, name, view, text);
    return text;
}

}  // namespace Vesk::platform
