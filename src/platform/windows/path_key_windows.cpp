#include "platform/path_key.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace Vesk::platform {

std::string pathKey(const std::filesystem::path& path) {
    const std::wstring& text = path.native();
    const auto length = static_cast<int>(text.size());
    std::wstring upper(text.size(), L'\0');
    // File names are compared by their upper case, letter by letter, whatever the user's language.
    if (::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, text.data(), length, upper.data(),
                        length, nullptr, nullptr, 0) != length) {
        return fromWide(text);
    }
    return fromWide(upper);
}

}  // namespace Vesk::platform
