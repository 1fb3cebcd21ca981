// The base of every value of the language.
//
// Values are held by shared pointers and have no locks. Once resolved, a value may be read from
// several threads, but nothing may change it at the same time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "types/values/key.h"

namespace Vesk {

class VeskValue;
class ValueSize;
class IdentifierPath;

using ValuePtr = std::shared_ptr<VeskValue>;

/// The source unit that internal errors of values name.
inline constexpr const char* kValueSourceUnit = "types/vesk_value_types";

/// Gives the value that an identifier path names; normally a Context.
class Resolver {
  public:
    virtual ~Resolver() = default;

    /// Never returns an empty pointer. Throws NotFoundException or MissingVariable for an unknown
    /// name, and LoopFoundException if the value is already being resolved.
    virtual ValuePtr resolveIdentifier(const IdentifierPath& path) = 0;

    /// Called when a string refers to a variable that does not exist. Writes a warning; a resolver
    /// that works silently overrides it.
    virtual void reportMissing(const IdentifierPath& path);
};

/// A value that stands for another one until it is resolved.
class Resolvable {
  public:
    /// Stores the resolver that looks up names. It is not owned and must outlive the call of
    /// `resolve`.
    virtual void setResolver(Resolver* resolver) = 0;

    /// The value after expansion and lookup.
    virtual ValuePtr resolve() = 0;

  protected:
    ~Resolvable() = default;
};

class IVeskValueIterator {
  public:
    virtual ~IVeskValueIterator() = default;
    virtual IVeskValueIterator& next() = 0;
    virtual ValuePtr get() const = 0;
    virtual bool equals(const IVeskValueIterator& other) const = 0;
};

using ValueIteratorPtr = std::unique_ptr<IVeskValueIterator>;

/// All classes of values.
enum class ValueKind : unsigned char {
    CharSet,
    Context,
    Identifier,
    Int,
    List,
    Path,
    RawString,
    String,
};

class VeskValue {
  public:
    virtual ~VeskValue() = default;

    /// The value's class; see `valueAs`.
    ValueKind kind() const noexcept { return kind_; }

    /// A new value of the same class with the same content.
    virtual ValuePtr clone() const = 0;

    /// The same, sharing nothing that can change: lists and contexts are copied all the way down,
    /// except for items that resolving leaves unchanged.
    virtual ValuePtr deepCopy() const { return clone(); }

    /// Whether resolving leaves the value unchanged, so that lists may share it.
    virtual bool isSettled() const { return false; }

    /// The value as something to be resolved, or null if it never needs resolving.
    virtual Resolvable* resolvable() noexcept { return nullptr; }

    /// Adds the size of what the value holds.
    virtual void addTo(ValueSize& size) const;

    /// The sum as a new value; this one is unchanged. Throws BadConversion or BadOperation.
    virtual ValuePtr add(const VeskValue& other) const = 0;

    /// The += of assignments. Changes this value, or throws as `add` does and changes nothing.
    virtual void append(const VeskValue& other) = 0;

    /// The element that the key selects, or an empty pointer if this kind of value has no elements.
    /// Throws IndexException if there is no such element.
    virtual ValuePtr at(const Key& key) const;

    /// The text as it goes into command lines and files.
    virtual std::string toString() const = 0;

    /// The text as messages and dumps show it.
    virtual std::string toDisplayString() const = 0;

    virtual ValueIteratorPtr begin() const = 0;
    virtual ValueIteratorPtr end() const = 0;

    virtual bool equals(const VeskValue& other) const = 0;
    virtual bool notEquals(
        const VeskValue& other) const;  ///< the opposite of `equals`; not overridden
    virtual bool greaterThan(const VeskValue& other) const = 0;
    virtual bool lessThan(const VeskValue& other) const = 0;

    /// The name of the class as text.
    virtual std::string typeName() const = 0;

  protected:
    explicit VeskValue(ValueKind kind) noexcept : kind_(kind) {}

  private:
    ValueKind kind_;
};

/// The value as the given class, or null if it has another class or is null itself. Every step of a
/// build asks values for their class, and comparing a number is much cheaper than a dynamic cast.
template <class Class>
const Class* valueAs(const VeskValue* value) noexcept {
    return value != nullptr && Class::isOf(value->kind()) ? static_cast<const Class*>(value)
                                                          : nullptr;
}

template <class Class>
Class* valueAs(VeskValue* value) noexcept {
    return const_cast<Class*>(valueAs<Class>(static_cast<const VeskValue*>(value)));
}

/// The value as something to be resolved, or null if it never needs resolving or is null itself.
inline Resolvable* resolvableOf(const ValuePtr& value) noexcept {
    return value ? value->resolvable() : nullptr;
}

/// The value's elements in order, as its iterator gives them: the words of a string, the items of a
/// list.
std::vector<ValuePtr> elementsOf(const VeskValue& value);

}  // namespace Vesk
