// Integers and the character set.
#pragma once

#include <cstdint>

#include "types/values/value.h"

namespace Vesk {

/// A signed 32-bit integer; sums wrap around.
class VeskInt : public VeskValue {
  public:
    explicit VeskInt(std::int32_t number) : VeskValue(ValueKind::Int), value(number) {}

    static constexpr bool isOf(ValueKind kind) noexcept { return kind == ValueKind::Int; }
    ValuePtr clone() const override;
    ValuePtr add(const VeskValue& other) const override;
    void append(const VeskValue& other) override;
    std::string toString() const override;
    std::string toDisplayString() const override { return toString(); }
    bool isSettled() const override { return true; }
    ValueIteratorPtr begin() const override;  ///< equal to `end`: an integer has no elements
    ValueIteratorPtr end() const override;
    bool equals(const VeskValue& other) const override;
    bool greaterThan(const VeskValue& other) const override;
    bool lessThan(const VeskValue& other) const override;
    std::string typeName() const override { return "VeskInt"; }

    std::int32_t value;

  private:
    std::int32_t operand(const VeskValue& other) const;
};

/// The ASCII characters, selected by code or by name. This is how characters that cannot be written
/// in a string get into one.
class VeskCharSet : public VeskValue {
  public:
    VeskCharSet() : VeskValue(ValueKind::CharSet) {}

    ValuePtr clone() const override;
    ValuePtr add(const VeskValue& other) const override;
    void append(const VeskValue& other) override;
    ValuePtr at(const Key& key) const override;
    std::string toString() const override { return {}; }
    std::string toDisplayString() const override { return "ascii"; }
    ValueIteratorPtr begin() const override;
    ValueIteratorPtr end() const override;
    bool equals(const VeskValue& other) const override;
    bool greaterThan(const VeskValue& other) const override;
    bool lessThan(const VeskValue& other) const override;
    std::string typeName() const override { return "VeskCharSet"; }
};

}  // namespace Vesk
