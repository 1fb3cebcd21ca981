// Unordered containers of texts that are searched without making a string.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace Vesk {

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

template <class Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

}  // namespace Vesk
