#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "base/ci_string.h"

namespace Vesk {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

bool isSame(char a, char b) noexcept {
    return asciiLower(a) == asciiLower(b);
}

/// The number of single-byte edits between two words, counting a swap of two neighbours as one;
/// `limit + 1` if it is larger than `limit`.
std::size_t editDistance(std::string_view a, std::string_view b, std::size_t limit) {
    const std::size_t difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
    if (difference > limit) {
        return limit + 1;
    }
    std::vector<std::size_t> twoBack;
    std::vector<std::size_t> back;
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        twoBack = std::exchange(back, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = back[j - 1] + (isSame(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({replaced, back[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && isSame(a[i - 1], b[j - 2]) && isSame(a[i - 2], b[j - 1])) {
                row[j] = std::min(row[j], twoBack[j - 2] + 1);
            }
        }
    }
    return row[b.size()];
}

}  // namespace

std::string_view trimmed(std::string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string lowerCased(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), asciiLower);
    return result;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            result += separator;
        }
        result += parts[i];
    }
    return result;
}

std::string clockText(std::chrono::steady_clock::duration duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration).count();
    const auto minutes = seconds / 60;
    return minutes < 60 ? fmt::format("{}:{:02}", minutes, seconds % 60)
                        : fmt::format("{}:{:02}:{:02}", minutes / 60, minutes % 60, seconds % 60);
}

std::string counted(std::size_t count, std::string_view what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

int leadingInteger(const std::string& text) {
    // Own messages and limits, because what std::stoi says and accepts differs between libraries.
    std::size_t at = text.find_first_not_of(" \t\r\n\v\f");
    at = at == std::string::npos ? text.size() : at;
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        ++at;
    }
    const std::size_t firstDigit = at;
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        value = value * 10 + (text[at] - '0');
        if (value > std::int64_t{std::numeric_limits<int>::max()} + (negative ? 1 : 0)) {
            throw std::out_of_range("stoi argument out of range");
        }
    }
    if (at == firstDigit) {
        throw std::invalid_argument("invalid stoi argument");
    }
    return static_cast<int>(negative ? -value : value);
}

std::string closestName(std::string_view name, const std::vector<std::string>& candidates) {
    const std::size_t limit = std::max<std::size_t>(1, name.size() / 3);
    std::size_t best = limit + 1;
    std::string closest;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = editDistance(name, candidate, limit);
        if (distance < best && distance < candidate.size()) {
            best = distance;
            closest = candidate;
        }
    }
    return closest;
}

std::string didYouMean(const std::vector<std::string>& names) {
    return "did you mean '" + joined(names, "' or '") + "'?";
}

std::string didYouMean(std::string_view name, const std::vector<std::string>& candidates) {
    const std::string closest = closestName(name, candidates);
    return closest.empty() ? std::string{} : didYouMean({closest});
}

}  // namespace Vesk
