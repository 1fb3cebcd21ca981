#include "types/value.h"

#include "base/console.h"
#include "types/context.h"
#include "types/context_value.h"
#include "types/expansion.h"
#include "types/identifier_path.h"
#include "types/list_value.h"

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
    for (const ValueIteratorPtr it = value.begin(); it && !it->equals(*end); it->next()) {
        elements.push_back(it->get());
    }
    return elements;
}

}  // namespace Vesk
