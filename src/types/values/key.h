// Keys: how an element of a value is selected.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

namespace Vesk {

class VeskValue;

struct IndexKey {
    std::int64_t index = 0;
};

/// The elements from `start` up to but not including `end`.
struct RangeKey {
    std::int64_t start = 0;
    std::int64_t end = 0;
    std::int64_t step = 1;
};

struct NameKey {
    std::string name;
};

struct RegexKey {
    std::string pattern;
};

using Key = std::variant<IndexKey, RangeKey, NameKey, RegexKey>;

/// The key as messages show it: [1], [1:3:1], name, /pattern/.
std::string keyToString(const Key& key);

/// The key that a value stands for when used as an index. Throws std::invalid_argument for an empty
/// pointer and std::runtime_error for a kind of value that cannot be a key.
Key makeKey(const std::shared_ptr<VeskValue>& value);

}  // namespace Vesk
