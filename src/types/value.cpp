#include "types/value.h"

#include "base/console.h"
#include "types/context.h"
#include "types/context_value.h"
#include "types/expansion.h"
#include "types/identifier_value.h"
#include "types/list_value.h"
#include "types/string_values.h"
#include "types/value_size.h"

namespace Vesk {

void Resolver::reportMissing(const IdentifierPath& path) {
    console::warning("Variable '{}' does not exist.\n", path.toDisplayString());
}

ValuePtr VeskValue::at(const Key&) const {
    return nullptr;
}

bool VeskValue::notEquals(const VeskValue& other) const {
    return !equals(other);
}

Resolvable* resolvableOf(const ValuePtr& value) noexcept {
    if (!value) {
        return nullptr;
    }
    switch (value->kind()) {
        case ValueKind::Context:
            return static_cast<VeskContext*>(value.get());
        case ValueKind::Identifier:
            return static_cast<VeskIdentifier*>(value.get());
        case ValueKind::List:
            return static_cast<VeskList*>(value.get());
        case ValueKind::Path:
        case ValueKind::String:
            return static_cast<VeskString*>(value.get());
        case ValueKind::CharSet:
        case ValueKind::Int:
        case ValueKind::RawString:
            break;
    }
    return nullptr;
}

ValuePtr deepCopy(const VeskValue& value) {
    if (const auto* list = valueAs<VeskList>(&value)) {
        std::vector<ValuePtr> items;
        items.reserve(list->items.size());
        for (const ValuePtr& item : list->items) {
            items.push_back(item && !isSettled(*item) ? deepCopy(*item) : item);
        }
        return std::make_shared<VeskList>(std::move(items));
    }
    if (const auto* context = valueAs<VeskContext>(&value)) {
        // A mere reference stays one: what it refers to belongs to somebody else.
        return context->owns() ? std::make_shared<VeskContext>(context->context()->deepCopy())
                               : context->clone();
    }
    return value.clone();
}

std::vector<ValuePtr> elementsOf(const VeskValue& value) {
    std::vector<ValuePtr> elements;
    const ValueIteratorPtr end = value.end();
    ValueSize size;
    for (const ValueIteratorPtr it = value.begin(); it && !it->equals(*end); it->next()) {
        elements.push_back(it->get());
        if (elements.back()) {
            size.add(*elements.back());
        }
    }
    return elements;
}

}  // namespace Vesk
