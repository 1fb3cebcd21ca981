#include "editor/uri.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>

#include "base/ci_string.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

constexpr std::string_view kScheme = "file:";

bool isPlain(char c) noexcept {
    const auto inRange = [c](char first, char last) { return first <= c && c <= last; };
    return inRange('a', 'z') || inRange('A', 'Z') || inRange('0', '9') ||
           std::string_view("-._~/").find(c) != std::string_view::npos;
}

bool isDrive(std::string_view path) noexcept {
    return path.size() >= 2 && path[1] == ':' && isPlain(path[0]) && path[0] != '/';
}

std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        unsigned code = 0;
        const char* const first = text.data() + at + 1;
        if (text[at] == '%' && at + 2 < text.size() &&
            std::from_chars(first, first + 2, code, 16).ptr == first + 2) {
            result += static_cast<char>(code);
            at += 2;
        } else {
            result += text[at];
        }
    }
    return result;
}

}  // namespace

std::string percentEncoded(std::string_view text) {
    std::string result;
    for (const char c : text) {
        result +=
            isPlain(c) ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return result;
}

std::string uriOf(const std::filesystem::path& file) {
    std::string path = platform::pathToUtf8(file);
    std::ranges::replace(path, '\\', '/');
    if (path.starts_with("//")) {
        return "file:" + percentEncoded(path);
    }
    if (isDrive(path)) {
        return "file:///" + path.substr(0, 2) + percentEncoded(path.substr(2));
    }
    return "file://" + percentEncoded(path);
}

std::optional<std::filesystem::path> pathOfUri(std::string_view uri) {
    if (!equalsIgnoringCase(uri.substr(0, kScheme.size()), kScheme)) {
        return std::nullopt;
    }
    uri.remove_prefix(kScheme.size());
    std::string path = decoded(uri.substr(0, uri.find_first_of("?#")));
    if (path.starts_with("///")) {
        path.erase(0, 2);
    } else if (path.starts_with("//localhost/")) {
        path.erase(0, std::string_view("//localhost").size());
    }
    if (path.starts_with('/') && isDrive(std::string_view(path).substr(1))) {
        path.erase(0, 1);
    }
    return path.empty() ? std::nullopt : std::optional(platform::pathFromUtf8(path));
}

}  // namespace Vesk::editor
