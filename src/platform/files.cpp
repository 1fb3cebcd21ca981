#include "platform/files.h"

#include "platform/system.h"

namespace Vesk::platform {

namespace {

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSlash(char c) noexcept {
    return c == '/' || c == '\\';
}

}  // namespace

bool isAbsolutePath(std::string_view text) noexcept {
    if (text.size() >= 3 && isLetter(text[0]) && text[1] == ':' && isSlash(text[2])) {
        return true;
    }
    if constexpr (kWindows) {
        return text.size() >= 2 && isSlash(text[0]) && isSlash(text[1]);
    } else {
        return !text.empty() && text[0] == '/';
    }
}

}  // namespace Vesk::platform
