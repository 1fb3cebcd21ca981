#include "cache/file_state.h"

#include <array>
#include <charconv>
#include <limits>

namespace Vesk {
namespace {

constexpr unsigned kHex = 16;
constexpr unsigned kDecimal = 10;
constexpr std::uint8_t kNoDigit = 0xff;

constexpr std::array<std::uint8_t, 256> digitValues() {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::uint8_t i = 0; i < kHex; ++i) {
        values[static_cast<unsigned char>("0123456789abcdef"[i])] = i;
    }
    return values;
}

constexpr std::array<std::uint8_t, 256> kDigits = digitValues();

/// Takes a number and the blank behind it. Tables have millions of digits: none of them costs a
/// look at whether the number still fits, for which only its length has to be known.
template <unsigned kBase>
bool takeDigits(std::string_view& text, std::uint64_t& number) {
    constexpr std::size_t kSafe = kBase == kHex ? 16 : std::numeric_limits<std::uint64_t>::digits10;
    std::uint64_t value = 0;
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        const std::uint8_t digit = kDigits[static_cast<unsigned char>(text[i])];
        if (digit >= kBase) {
            break;
        }
        value = value * kBase + digit;
    }
    if (i == 0 || i == text.size() || text[i] != ' ') {
        return false;
    }
    number = value;
    const auto fits = [&text, &number, i] {
        return std::from_chars(text.data(), text.data() + i, number, kBase).ec == std::errc();
    };
    if (i > kSafe && !fits()) {
        return false;
    }
    text.remove_prefix(i + 1);
    return true;
}

bool takeNumber(std::string_view& text, std::uint64_t& number) {
    return takeDigits<kDecimal>(text, number);
}

bool takeHex(std::string_view& text, std::uint64_t& number) {
    return takeDigits<kHex>(text, number);
}

bool takeSigned(std::string_view& text, std::int64_t& number) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    std::uint64_t value = 0;
    if (!takeNumber(text, value) ||
        value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return false;
    }
    number = negative ? -static_cast<std::int64_t>(value) : static_cast<std::int64_t>(value);
    return true;
}

/// Appends a number and a blank.
template <class Number>
void append(std::string& table, Number number, unsigned base = kDecimal) {
    std::array<char, std::numeric_limits<Number>::digits10 + 3> digits{};
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, static_cast<int>(base));
    table.append(digits.data(), end);
    table += ' ';
}

bool isKind(char letter) {
    return std::string_view("-dnofr?").find(letter) != std::string_view::npos;
}

}  // namespace

platform::FileStatus statusOf(const FileState& state) noexcept {
    platform::FileStatus status;
    status.regular = true;
    status.device = state.device;
    status.number = state.number;
    status.size = state.size;
    status.modifiedNanoseconds = state.modified;
    status.changedNanoseconds = state.changed;
    return status;
}

void appendStateLine(std::string& table, const FileState& state, std::string_view path) {
    table += static_cast<char>(state.kind);
    table += ' ';
    append(table, state.device, kHex);
    append(table, state.number, kHex);
    append(table, state.size);
    append(table, state.modified);
    append(table, state.changed);
    append(table, state.hash.high, kHex);
    append(table, state.hash.low, kHex);
    table += path;
    table += '\n';
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
    if (!takeHex(line, state.device) || !takeHex(line, state.number) ||
        !takeNumber(line, state.size) || !takeSigned(line, state.modified) ||
        !takeSigned(line, state.changed) || !takeHex(line, state.hash.high) ||
        !takeHex(line, state.hash.low)) {
        return false;
    }
    path = line;
    table.remove_prefix(end + 1);
    return true;
}

}  // namespace Vesk
