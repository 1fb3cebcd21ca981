// The three kinds of string.
#pragma once

#include <filesystem>
#include <string>

#include "types/values/value.h"

namespace Vesk {

/// What all strings share. A string iterates over its words, the runs between white space.
class VeskBaseString : public VeskValue, public std::enable_shared_from_this<VeskBaseString> {
  public:
    static constexpr bool isOf(ValueKind kind) noexcept {
        return kind == ValueKind::String || kind == ValueKind::Path || kind == ValueKind::RawString;
    }

    ValuePtr clone() const override { return makeString(text); }
    void addTo(ValueSize& size) const override;
    ValuePtr add(const VeskValue& other) const override;
    void append(const VeskValue& other) override;
    ValuePtr at(const Key& key) const override;
    std::string toString() const override { return text; }
    std::string toDisplayString() const override;
    ValueIteratorPtr begin() const override;
    ValueIteratorPtr end() const override;
    bool equals(const VeskValue& other) const override;
    bool greaterThan(const VeskValue& other) const override;
    bool lessThan(const VeskValue& other) const override;
    std::string typeName() const override { return "VeskBaseString"; }

    /// The text without enclosing double quotes, for the classes that strip them.
    virtual std::string unquoted() const { return text; }

    /// A new string of the same class (and base directory) holding `newText`.
    virtual std::shared_ptr<VeskBaseString> makeString(std::string newText) const = 0;

    std::string text;

  protected:
    VeskBaseString(ValueKind kind, std::string content)
        : VeskValue(kind), text(std::move(content)) {}

  private:
    std::shared_ptr<const VeskBaseString> sharedSelf() const;
};

/// A plain string: its references are expanded when it is resolved.
class VeskString : public VeskBaseString, public Resolvable {
  public:
    explicit VeskString(std::string content) : VeskString(ValueKind::String, std::move(content)) {}

    static constexpr bool isOf(ValueKind kind) noexcept {
        return kind == ValueKind::String || kind == ValueKind::Path;
    }
    std::string typeName() const override { return "VeskString"; }
    bool isSettled() const override;
    std::string unquoted() const override;
    std::shared_ptr<VeskBaseString> makeString(std::string newText) const override;

    Resolvable* resolvable() noexcept override { return this; }
    void setResolver(Resolver* resolver) override { resolver_ = resolver; }

    /// Expands the text and keeps the resulting text. Gives a string, or a list of strings when the
    /// text has cross references. Without a resolver the text stays as it is.
    ValuePtr resolve() override;

  protected:
    VeskString(ValueKind kind, std::string content) : VeskBaseString(kind, std::move(content)) {}

    Resolver* resolver_ = nullptr;
};

/// A path. Once resolved it is absolute: a relative one is joined to the base directory.
class VeskPathString : public VeskString {
  public:
    VeskPathString(std::string content, std::filesystem::path base)
        : VeskString(ValueKind::Path, std::move(content)), baseDirectory(std::move(base)) {}

    static constexpr bool isOf(ValueKind kind) noexcept { return kind == ValueKind::Path; }
    bool isSettled() const override;
    std::string toDisplayString() const override;
    bool equals(const VeskValue& other) const override;
    std::shared_ptr<VeskBaseString> makeString(std::string newText) const override;

    /// One path, or a list with a path for each text that cross references give. A literal that is
    /// nothing but one reference to a list or a plain string gives a path for each element or word;
    /// in any other literal blanks belong to the path.
    ValuePtr resolve() override;

    std::filesystem::path baseDirectory;

  private:
    bool isWhole() const;  ///< needs no base directory
    ValuePtr joinedToBase(const std::string& path) const;
};

/// A string that is never expanded.
class VeskRawString : public VeskBaseString {
  public:
    explicit VeskRawString(std::string content)
        : VeskBaseString(ValueKind::RawString, std::move(content)) {}

    static constexpr bool isOf(ValueKind kind) noexcept { return kind == ValueKind::RawString; }
    bool isSettled() const override { return true; }
    std::string typeName() const override { return "VeskRawString"; }
    std::shared_ptr<VeskBaseString> makeString(std::string newText) const override;
};

}  // namespace Vesk
