#include "types/identifier_value.h"

#include "types/errors.h"

namespace Vesk {

ValuePtr VeskIdentifier::clone() const {
    return std::make_shared<VeskIdentifier>(path);
}

ValuePtr VeskIdentifier::add(const VeskValue& other) const {
    throw BadOperation(toDisplayString() + " is not resolved yet and '" + other.toDisplayString() +
                       "' cannot be added.");
}

void VeskIdentifier::append(const VeskValue& other) {
    throw BadOperation(toDisplayString() + " is not resolved yet and '" + other.toDisplayString() +
                       "' cannot be appended to it.");
}

ValuePtr VeskIdentifier::resolve() {
    if (resolver_ == nullptr) {
        throw NotFoundException("Assignment", path.toDisplayString());
    }
    return resolver_->resolveIdentifier(path);
}

}  // namespace Vesk
