#include "types/values/identifier_value.h"

#include "base/ci_string.h"
#include "types/values/errors.h"

namespace Vesk {

namespace {

/// If the name itself is missing, not one that its value leads to, it may have been meant as text.
void addQuotes(Noted& error, const std::string& missing, const IdentifierPath& path) {
    if (CiString(missing) == CiString(path.segments.front().name)) {
        error.addNote("text needs double quotes: \"" + path.toDisplayString() + "\"");
    }
}

}  // namespace

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
    try {
        return resolver_->resolveIdentifier(path);
    } catch (NotFoundException& error) {
        addQuotes(error, error.name(), path);
        throw;
    } catch (MissingVariable& error) {
        addQuotes(error, error.name(), path);
        throw;
    }
}

}  // namespace Vesk
