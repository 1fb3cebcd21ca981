// Lists of values.
#pragma once

#include <vector>

#include "types/values/value.h"

namespace Vesk {

class VeskList : public VeskValue, public Resolvable {
  public:
    VeskList() : VeskValue(ValueKind::List) {}
    explicit VeskList(std::vector<ValuePtr> elements)
        : VeskValue(ValueKind::List), items(std::move(elements)) {}

    static constexpr bool isOf(ValueKind kind) noexcept { return kind == ValueKind::List; }
    ValuePtr clone() const override;  ///< the elements are shared
    ValuePtr deepCopy() const override;
    void addTo(ValueSize& size) const override;
    ValuePtr add(const VeskValue& other) const override;
    void append(const VeskValue& other) override;
    ValuePtr at(const Key& key) const override;
    std::string toString() const override;
    std::string toDisplayString() const override;
    ValueIteratorPtr begin() const override;
    ValueIteratorPtr end() const override;
    bool equals(const VeskValue& other) const override;
    bool greaterThan(const VeskValue& other) const override;  ///< by the elements' identities
    bool lessThan(const VeskValue& other) const override;     ///< by the elements' identities
    std::string typeName() const override { return "VeskList"; }

    Resolvable* resolvable() noexcept override { return this; }

    /// Its elements get the resolver when they are resolved.
    void setResolver(Resolver* resolver) override { resolver_ = resolver; }

    /// A new list of the resolved elements. An element that resolves to a list (a reference to one,
    /// or a string with cross references) contributes its elements.
    ValuePtr resolve() override;

    std::vector<ValuePtr> items;

  private:
    ValuePtr resolvedItem(const ValuePtr& item) const;
    const VeskList& listOperand(const VeskValue& other) const;

    Resolver* resolver_ = nullptr;
};

}  // namespace Vesk
