// References to variables.
#pragma once

#include "types/values/identifier_path.h"
#include "types/values/value.h"

namespace Vesk {

/// A reference that is not resolved yet. It compares equal to anything, so no decision may depend
/// on it before it is resolved.
class VeskIdentifier : public VeskValue, public Resolvable {
  public:
    explicit VeskIdentifier(IdentifierPath name)
        : VeskValue(ValueKind::Identifier), path(std::move(name)) {}

    static constexpr bool isOf(ValueKind kind) noexcept { return kind == ValueKind::Identifier; }
    ValuePtr clone() const override;
    ValuePtr add(const VeskValue& other) const override;
    void append(const VeskValue& other) override;
    std::string toString() const override { return path.toDisplayString(); }
    std::string toDisplayString() const override { return path.toDisplayString(); }
    ValueIteratorPtr begin() const override { return nullptr; }
    ValueIteratorPtr end() const override { return nullptr; }
    bool equals(const VeskValue&) const override { return true; }
    bool greaterThan(const VeskValue&) const override { return false; }
    bool lessThan(const VeskValue&) const override { return false; }
    std::string typeName() const override { return "VeskIdentifier"; }

    Resolvable* resolvable() noexcept override { return this; }
    void setResolver(Resolver* resolver) override { resolver_ = resolver; }

    /// The value that the path names, shared with the variable. Throws as the resolver does.
    ValuePtr resolve() override;

    IdentifierPath path;

  private:
    Resolver* resolver_ = nullptr;
};

}  // namespace Vesk
