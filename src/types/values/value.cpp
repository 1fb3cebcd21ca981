#include "types/values/value.h"

#include "base/console.h"
#include "types/values/identifier_path.h"
#include "types/values/value_size.h"

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

void VeskValue::addTo(ValueSize&) const {}

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
