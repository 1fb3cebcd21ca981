#include "base/printable.h"

#include <cstddef>
#include <fmt/format.h>
#include <iterator>

namespace Vesk {
namespace {

/// Whether the byte after 0xC2 makes one of the control characters above ASCII.
bool isWideControl(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 && byte < 0xA0;
}

/// The first byte from `from` on that must not reach a terminal: a control character other than a
/// tab or a line end.
std::size_t findControl(std::string_view text, std::size_t from) noexcept {
    constexpr unsigned char kDelete = 0x7F;
    constexpr unsigned char kWideLead = 0xC2;
    for (std::size_t i = from; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool more = i + 1 < text.size();
        const bool ofLineEnd = byte == '\n' || (byte == '\r' && more && text[i + 1] == '\n');
        if ((byte < ' ' && byte != '\t' && !ofLineEnd) || byte == kDelete ||
            (byte == kWideLead && more && isWideControl(text[i + 1]))) {
            return i;
        }
    }
    return std::string_view::npos;
}

constexpr char kEscape = '\x1b';

/// The end of the sequence that an escape character starts.
std::size_t endOfEscape(std::string_view text, std::size_t at) noexcept {
    const char kind = at + 1 < text.size() ? text[at + 1] : '\0';
    std::size_t end = at + 2;
    if (kind == '[') {  // parameters, then one letter
        while (end < text.size() && (text[end] < '@' || text[end] > '~')) {
            ++end;
        }
        ++end;
    } else if (kind == ']') {  // a text, such as a link's, up to a bell or "\x1b\\"
        end = text.find_first_of("\a\x1b", end);
        end = end == std::string_view::npos ? text.size() : end + (text[end] == kEscape ? 2 : 1);
    }
    return end < text.size() ? end : text.size();
}

}  // namespace

void appendPrintable(std::string& out, std::string_view text) {
    std::size_t from = 0;
    for (std::size_t at = 0; (at = findControl(text, from)) != std::string_view::npos;) {
        out += text.substr(from, at - from);
        const bool wide = static_cast<unsigned char>(text[at]) > 0x7F;
        const auto code = static_cast<unsigned char>(text[at + (wide ? 1 : 0)]);
        fmt::format_to(std::back_inserter(out), "\\x{:02x}", code);
        from = at + (wide ? 2 : 1);
    }
    out += text.substr(from);
}

std::string printable(std::string_view text) {
    std::string result;
    appendPrintable(result, text);
    return result;
}

std::string withoutEscapes(std::string_view text) {
    std::string result;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find(kEscape, from)) != std::string_view::npos;) {
        result += text.substr(from, at - from);
        from = endOfEscape(text, at);
    }
    result += text.substr(from);
    return result;
}

}  // namespace Vesk
