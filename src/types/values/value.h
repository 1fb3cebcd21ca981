// The base of every value of the language.
//
// Values are held by shared pointers. They carry no locks: once resolved, a value may be read from
// several threads; nothing may change it at the same time.
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
    /// name, LoopFoundException when the value is just being resolved.
    virtual ValuePtr resolveIdentifier(const IdentifierPath& path) = 0;

    /// Told when a string refers to a variable that does not exist. Writes the warning; a resolver
    /// that works silently overrides it.
    virtual void reportMissing(const IdentifierPath& path);
};

/// A value that stands for another one until it is resolved.
class Resolvable {
  public:
    /// Stores who answers for names; not owned, and must outlive the call of `resolve`.
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

/// The classes of values that there are.
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

    /// Its class. `valueAs` is the way to get at it.
    ValueKind kind() const noexcept { return kind_; }

    /// A new value of the same class with the same content.
    virtual ValuePtr clone() const = 0;

    /// The same, sharing nothing that can change: lists and contexts are copied all the way down,
    /// but for items that resolving leaves as they are.
    virtual ValuePtr deepCopy() const { return clone(); }

    /// Whether resolving leaves the value as it is, so that lists may share it.
    virtual bool isSettled() const { return false; }

    /// The value as one that is resolved; null when it is none.
    virtual Resolvable* resolvable() noexcept { return nullptr; }

    /// Adds what the value holds.
    virtual void addTo(ValueSize& size) const;

    /// The sum as a new value; this one stays as it is. Throws BadConversion or BadOperation.
    virtual ValuePtr add(const VeskValue& other) const = 0;

    /// The += of assignments: changes this value, or throws as `add` does and changes nothing.
    virtual void append(const VeskValue& other) = 0;

    /// The element that the key selects; an empty pointer when this kind of value has no elements.
    /// Throws IndexException when it has no such element.
    virtual ValuePtr at(const Key& key) const;

    /// The text that goes into command lines and files.
    virtual std::string toString() const = 0;

    /// The text of messages and dumps.
    virtual std::string toDisplayString() const = 0;

    virtual ValueIteratorPtr begin() const = 0;
    virtual ValueIteratorPtr end() const = 0;

    virtual bool equals(const VeskValue& other) const = 0;
    virtual bool notEquals(const VeskValue& other) const;  ///< the opposite; nobody overrides it
    virtual bool greaterThan(const VeskValue& other) const = 0;
    virtual bool lessThan(const VeskValue& other) const = 0;

    /// The class's name as text.
    virtual std::string typeName() const = 0;

  protected:
    explicit VeskValue(ValueKind kind) noexcept : kind_(kind) {}

  private:
    ValueKind kind_;
};

/// The value as one of the class, or null when it is of another or null itself. Values are asked
/// for their classes at every step of a build: comparing a number is much cheaper than the search
/// that a dynamic cast is.
template <class Class>
const Class* valueAs(const VeskValue* value) noexcept {
    return value != nullptr && Class::isOf(value->kind()) ? static_cast<const Class*>(value)
                                                          : nullptr;
}

template <class Class>
Class* valueAs(VeskValue* value) noexcept {
    return const_cast<Class*>(valueAs<Class>(static_cast<const VeskValue*>(value)));
}

/// The value as one that is resolved, or null when it is none or null itself.
inline Resolvable* resolvableOf(const ValuePtr& value) noexcept {
    return value ? value->resolvable() : nullptr;
}

/// The value's elements in order, taken by iteration: the words of a string, the items of a list.
std::vector<ValuePtr> elementsOf(const VeskValue& value);

}  // namespace Vesk
