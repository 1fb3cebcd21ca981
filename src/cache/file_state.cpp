#include "cache/file_state.h"

#include <charconv>
#include <fmt/format.h>
#include <iterator>

namespace Vesk {
namespace {

constexpr int kHex = 16;

/// Takes a number and the blank behind it.
template <class Number>
bool takeNumber(std::string_view& text, Number& number, int base = 10) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end == text.data() + text.size() || *end != ' ') {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return true;
}

bool isKind(char letter) {
    return std::string_view("-dnofr?").find(letter) != std::string_view::npos;
}

}  // namespace

void appendStateLine(std::string& table, const FileState& state, std::string_view path) {
    fmt::format_to(std::back_inserter(table), "{} {:x} {:x} {} {} {} {:x} {:x} {}\n",
                   static_cast<char>(state.kind), state.device, state.number, state.size,
                   state.modified, state.changed, state.hash.high, state.hash.low, path);
}

bool takeStateLine(std::string_view& table, FileState& state, std::string_view& path) {
    const std::size_t end = table.find('\n');
    if (end == std::string_view::npos) {
        return false;
    }
    std::string_view line = table.substr(0, end);
    if (line.size() < 2 || !isKind(line[0]) || line[1] != ' ') {
        return false;
    }
    state.kind = static_cast<FileState::Kind>(line[0]);
    line.remove_prefix(2);
    if (!takeNumber(line, state.device, kHex) || !takeNumber(line, state.number, kHex) ||
        !takeNumber(line, state.size) || !takeNumber(line, state.modified) ||
        !takeNumber(line, state.changed) || !takeNumber(line, state.hash.high, kHex) ||
        !takeNumber(line, state.hash.low, kHex)) {
        return false;
    }
    path = line;
    table.remove_prefix(end + 1);
    return true;
}

}  // namespace Vesk
