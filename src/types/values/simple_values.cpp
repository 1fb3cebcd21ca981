#include "types/values/simple_values.h"

#include <array>

#include "base/ci_string.h"
#include "types/values/errors.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

constexpr int kIntIteratorCheckLine = 827;

/// The iterator over no elements: it never moves, and begin equals end.
class IntIterator : public IVeskValueIterator {
  public:
    explicit IntIterator(std::int32_t value) : value_(value) {}

    IVeskValueIterator& next() override { return *this; }
    ValuePtr get() const override { return std::make_shared<VeskInt>(value_); }
    bool equals(const IVeskValueIterator& other) const override {
        const auto* integer = dynamic_cast<const IntIterator*>(&other);
        if (integer == nullptr) {
            throw InternalError(kValueSourceUnit, kIntIteratorCheckLine,
                                "bool __cdecl Vesk::VeskInt::Iterator::equals(const class "
                                "Vesk::IVeskValueIterator &) const");
        }
        return value_ == integer->value_;
    }

  private:
    std::int32_t value_;
};

struct NamedCharacter {
    std::string_view name;
    char code;
};

constexpr std::array<NamedCharacter, 10> kNamedCharacters{{{"NUL", 0},
                                                           {"HT", 9},
                                                           {"LF", 10},
                                                           {"VT", 11},
                                                           {"CR", 13},
                                                           {"ESC", 27},
                                                           {"SPACE", 32},
                                                           {"DEL", 127},
                                                           {"TAB", 9},
                                                           {"NEWLINE", 10}}};

constexpr std::int64_t kCharacterCount = 128;

}  // namespace

ValuePtr VeskInt::clone() const {
    return std::make_shared<VeskInt>(value);
}

std::int32_t VeskInt::operand(const VeskValue& other) const {
    const auto* integer = valueAs<VeskInt>(&other);
    if (integer == nullptr) {
        throw BadConversion(typeName(), toDisplayString(), other.typeName());
    }
    return integer->value;
}

ValuePtr VeskInt::add(const VeskValue& other) const {
    ValuePtr sum = clone();
    sum->append(other);
    return sum;
}

void VeskInt::append(const VeskValue& other) {
    value = static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                      static_cast<std::uint32_t>(operand(other)));
}

std::string VeskInt::toString() const {
    return std::to_string(value);
}

ValueIteratorPtr VeskInt::begin() const {
    return std::make_unique<IntIterator>(value);
}
ValueIteratorPtr VeskInt::end() const {
    return std::make_unique<IntIterator>(value);
}

bool VeskInt::equals(const VeskValue& other) const {
    return value == operand(other);
}
bool VeskInt::greaterThan(const VeskValue& other) const {
    return value > operand(other);
}
bool VeskInt::lessThan(const VeskValue& other) const {
    return value < operand(other);
}

ValuePtr VeskCharSet::clone() const {
    return std::make_shared<VeskCharSet>();
}

ValuePtr VeskCharSet::add(const VeskValue&) const {
    throw BadOperation("A character set cannot be added to another value.");
}

void VeskCharSet::append(const VeskValue&) {
    throw BadOperation("A value cannot be appended to a character set.");
}

ValuePtr VeskCharSet::at(const Key& key) const {
    if (const auto* index = std::get_if<IndexKey>(&key)) {
        if (index->index >= 0 && index->index < kCharacterCount) {
            return std::make_shared<VeskString>(std::string(1, static_cast<char>(index->index)));
        }
    } else if (const auto* name = std::get_if<NameKey>(&key)) {
        for (const NamedCharacter& character : kNamedCharacters) {
            if (equalsIgnoringCase(character.name, name->name)) {
                return std::make_shared<VeskString>(std::string(1, character.code));
            }
        }
    }
    throw IndexException(toDisplayString(), key);
}

ValueIteratorPtr VeskCharSet::begin() const {
    throw BadOperation("A character set cannot be iterated.");
}
ValueIteratorPtr VeskCharSet::end() const {
    return begin();
}

bool VeskCharSet::equals(const VeskValue&) const {
    throw BadOperation("Character sets cannot be compared.");
}
bool VeskCharSet::greaterThan(const VeskValue& other) const {
    return equals(other);
}
bool VeskCharSet::lessThan(const VeskValue& other) const {
    return equals(other);
}

}  // namespace Vesk
