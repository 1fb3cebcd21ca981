// Contexts as values.
#pragma once

#include <memory>

#include "types/values/value.h"

namespace Vesk {

class Context;

/// A value that refers to a context: the value of `x = { ... }`, or the outputs of a dependency.
class VeskContext : public VeskValue, public Resolvable {
  public:
    /// Keeps the context alive.
    explicit VeskContext(std::shared_ptr<Context> context);

    /// Refers to a context that someone else keeps alive.
    static std::shared_ptr<VeskContext> referringTo(const std::shared_ptr<Context>& context);

    static constexpr bool isOf(ValueKind kind) noexcept { return kind == ValueKind::Context; }
    ValuePtr clone() const override;  ///< the context is shared

    /// A mere reference stays a reference: the context belongs to someone else.
    ValuePtr deepCopy() const override;

    /// A mere reference to a context adds nothing.
    void addTo(ValueSize& size) const override;
    ValuePtr add(const VeskValue& other) const override;
    void append(const VeskValue& other) override;
    ValuePtr at(const Key& key) const override;
    std::string toString() const override;
    std::string toDisplayString() const override;
    ValueIteratorPtr begin() const override;
    ValueIteratorPtr end() const override;
    bool equals(const VeskValue& other) const override;
    bool greaterThan(const VeskValue& other) const override;
    bool lessThan(const VeskValue& other) const override;
    std::string typeName() const override { return "VeskContext"; }

    Resolvable* resolvable() noexcept override { return this; }

    /// Names that the inner context lacks are looked up in the resolver, if that is a Context.
    void setResolver(Resolver* resolver) override;

    /// Evaluates the inner context's conditions, resolves its variables, and returns a value that
    /// refers to it.
    ValuePtr resolve() override;

    /// The context. Throws InternalError if it no longer exists.
    std::shared_ptr<Context> context() const;

    bool owns() const noexcept { return owner_ != nullptr; }

  private:
    VeskContext() : VeskValue(ValueKind::Context) {}
    const VeskContext& contextOperand(const VeskValue& other) const;

    std::weak_ptr<Context> reference_;
    std::shared_ptr<Context> owner_;  ///< empty for `referringTo`
};

}  // namespace Vesk
