#include "types/values/key.h"

#include <fmt/format.h>
#include <stdexcept>

#include "types/values/identifier_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

struct KeyText {
    std::string operator()(const IndexKey& key) const { return fmt::format("[{}]", key.index); }
    std::string operator()(const RangeKey& key) const {
        return fmt::format("[{}:{}:{}]", key.start, key.end, key.step);
    }
    std::string operator()(const NameKey& key) const { return key.name; }
    std::string operator()(const RegexKey& key) const { return "/" + key.pattern + "/"; }
};

}  // namespace

std::string keyToString(const Key& key) {
    return std::visit(KeyText{}, key);
}

Key makeKey(const ValuePtr& value) {
    if (!value) {
        throw std::invalid_argument("key value is null");
    }
    if (const auto* number = valueAs<VeskInt>(value.get())) {
        return IndexKey{number->value};
    }
    if (valueAs<VeskIdentifier>(value.get()) != nullptr ||
        valueAs<VeskBaseString>(value.get()) != nullptr) {
        return NameKey{value->toString()};
    }
    throw std::runtime_error("Unsupported key type: " + value->toDisplayString());
}

}  // namespace Vesk
