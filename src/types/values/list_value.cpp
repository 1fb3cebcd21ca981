#include "types/values/list_value.h"

#include <algorithm>
#include <functional>

#include "types/values/errors.h"
#include "types/values/value_size.h"

namespace Vesk {
namespace {

constexpr int kListIteratorCheckLine = 1133;

class ListIterator : public IVeskValueIterator {
  public:
    ListIterator(const std::vector<ValuePtr>* items, std::size_t position)
        : items_(items), position_(position) {}

    IVeskValueIterator& next() override {
        ++position_;
        return *this;
    }
    ValuePtr get() const override { return items_->at(position_); }
    bool equals(const IVeskValueIterator& other) const override {
        const auto* list = dynamic_cast<const ListIterator*>(&other);
        if (list == nullptr) {
            throw InternalError(kValueSourceUnit, kListIteratorCheckLine,
                                "bool __cdecl Vesk::VeskList::Iterator::equals(const class "
                                "Vesk::IVeskValueIterator &) const");
        }
        return position_ == list->position_ && (items_ == list->items_ || *items_ == *list->items_);
    }

  private:
    const std::vector<ValuePtr>* items_;
    std::size_t position_;
};

bool sameElement(const ValuePtr& a, const ValuePtr& b) {
    return a && b ? a->equals(*b) : !a && !b;
}

bool orderedByIdentity(const std::vector<ValuePtr>& a, const std::vector<ValuePtr>& b) {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(), [](const ValuePtr& left, const ValuePtr& right) {
            return std::less<const VeskValue*>{}(left.get(), right.get());
        });
}

}  // namespace

ValuePtr VeskList::clone() const {
    return std::make_shared<VeskList>(items);
}

ValuePtr VeskList::deepCopy() const {
    auto copy = std::make_shared<VeskList>();
    copy->items.reserve(items.size());
    for (const ValuePtr& item : items) {
        copy->items.push_back(item && !item->isSettled() ? item->deepCopy() : item);
    }
    return copy;
}

void VeskList::addTo(ValueSize& size) const {
    for (const ValuePtr& item : items) {
        if (item) {
            size.add(*item);
        }
    }
}

ValuePtr VeskList::add(const VeskValue& other) const {
    ValuePtr sum = clone();
    sum->append(other);
    return sum;
}

void VeskList::append(const VeskValue& other) {
    const auto* list = valueAs<VeskList>(&other);
    checkTextSize((items.size() + (list != nullptr ? list->items.size() : 1)) * kElementBytes);
    if (list != nullptr) {
        const std::vector<ValuePtr> added = list->items;  // `other` may be this list
        items.insert(items.end(), added.begin(), added.end());
    } else {
        items.push_back(other.clone());
    }
}

ValuePtr VeskList::at(const Key& key) const {
    if (const auto* index = std::get_if<IndexKey>(&key)) {
        if (static_cast<std::uint64_t>(index->index) < items.size()) {
            return items[static_cast<std::size_t>(index->index)];
        }
    }
    throw IndexException(toDisplayString(), key);
}

std::string VeskList::toString() const {
    std::string text;
    for (const ValuePtr& item : items) {
        text += (item ? item->toString() : std::string{}) + ' ';
    }
    if (!text.empty()) {
        text.pop_back();
    }
    return text;
}

std::string VeskList::toDisplayString() const {
    std::string text = "[";
    for (const ValuePtr& item : items) {
        text += " " + (item ? item->toDisplayString() : std::string{}) + ",";
    }
    if (!items.empty()) {
        text.back() = ' ';
    }
    return text + "]";
}

ValueIteratorPtr VeskList::begin() const {
    return std::make_unique<ListIterator>(&items, 0);
}

ValueIteratorPtr VeskList::end() const {
    return std::make_unique<ListIterator>(&items, items.size());
}

bool VeskList::equals(const VeskValue& other) const {
    const auto* list = valueAs<VeskList>(&other);
    return list != nullptr && std::equal(items.begin(), items.end(), list->items.begin(),
                                         list->items.end(), sameElement);
}

const VeskList& VeskList::listOperand(const VeskValue& other) const {
    const auto* list = valueAs<VeskList>(&other);
    if (list == nullptr) {
        throw BadConversion(other.typeName(), other.toDisplayString(), typeName());
    }
    return *list;
}

bool VeskList::greaterThan(const VeskValue& other) const {
    return orderedByIdentity(listOperand(other).items, items);
}

bool VeskList::lessThan(const VeskValue& other) const {
    return orderedByIdentity(items, listOperand(other).items);
}

ValuePtr VeskList::resolvedItem(const ValuePtr& item) const {
    Resolvable* resolvable = resolvableOf(item);
    if (resolvable == nullptr || item->isSettled()) {
        return item;
    }
    resolvable->setResolver(resolver_);
    return resolvable->resolve();
}

ValuePtr VeskList::resolve() {
    auto resolved = std::make_shared<VeskList>();
    resolved->items.reserve(items.size());
    ValueSize size;
    for (const ValuePtr& item : items) {
        const bool isList = valueAs<VeskList>(item.get()) != nullptr;
        ValuePtr value = resolvedItem(item);
        if (value) {
            size.add(*value);
        }
        if (const auto* list = valueAs<VeskList>(value.get()); list && !isList) {
            resolved->append(*list);
        } else {
            resolved->items.push_back(std::move(value));
        }
    }
    return resolved;
}

}  // namespace Vesk
