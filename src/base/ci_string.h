// Names that compare without regard to ASCII case.
#pragma once

#include <compare>
#include <cstddef>
#include <fmt/format.h>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace Vesk {

constexpr char asciiLower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Below, at or above zero, like strcmp; only ASCII letters are folded.
int compareIgnoringCase(std::string_view a, std::string_view b) noexcept;

bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept;

/// A string that compares, orders and hashes without regard to ASCII case but keeps its original
/// spelling.
class CiString {
  public:
    CiString() = default;
    CiString(std::string text) : text_(std::move(text)) {}
    CiString(std::string_view text) : text_(text) {}
    CiString(const char* text) : text_(text) {}

    const std::string& str() const noexcept { return text_; }
    bool empty() const noexcept { return text_.empty(); }
    operator std::string_view() const noexcept { return text_; }

    friend bool operator==(const CiString& a, const CiString& b) noexcept {
        return equalsIgnoringCase(a.text_, b.text_);
    }
    friend std::weak_ordering operator<=>(const CiString& a, const CiString& b) noexcept {
        return compareIgnoringCase(a.text_, b.text_) <=> 0;
    }

  private:
    std::string text_;
};

/// Orders CiStrings, and lets a map be searched with a string_view without making a CiString.
struct CiLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const noexcept {
        return compareIgnoringCase(a, b) < 0;
    }
};

struct CiHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept;
};

struct CiEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const noexcept {
        return equalsIgnoringCase(a, b);
    }
};

}  // namespace Vesk

template <>
struct fmt::formatter<Vesk::CiString> : fmt::formatter<std::string_view> {
    auto format(const Vesk::CiString& text, fmt::format_context& context) const {
        return fmt::formatter<std::string_view>::format(text.str(), context);
    }
};
