// How a context is resolved: hints first, then held appends, then every variable.

#include "base/attempt.h"
#include "base/console.h"
#include "base/text.h"
#include "types/context/context.h"
#include "types/values/errors.h"
#include "types/values/identifier_value.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

std::string variableNote(const Assignment& assignment) {
    return "in variable '" + assignment.name.str() + "'";
}

/// The text of a hint that names a variable, or nothing.
std::optional<IdentifierPath> hintPath(const ValuePtr& value) {
    if (const auto* identifier = valueAs<VeskIdentifier>(value.get())) {
        return identifier->path;
    }
    IdentifierPath path;
    ParseError error;
    std::size_t end = 0;
    const auto* string = valueAs<VeskBaseString>(value.get());
    if (string != nullptr && parseIdentifierPath(string->text, path, error, &end) &&
        end == string->text.size()) {
        return path;
    }
    return std::nullopt;
}

}  // namespace

ValuePtr Context::resolveIdentifier(const IdentifierPath& path) {
    return resolution_.resolveIdentifier(path);
}

void Context::reportMissing(const IdentifierPath& path) {
    resolution_.reportMissing({}, path);
}

void Context::throwUnknown(std::string_view name, bool dotted) const {
    // Worked out only when printed: most errors of this kind are caught and never seen.
    const auto suggestion = [self = shared_from_this(), name = std::string(name)] {
        return didYouMean(name, self->names());
    };
    if (dotted) {
        MissingVariable error{std::string(name)};
        error.addNote(suggestion);
        throw error;
    }
    NotFoundException error("Assignment", std::string(name));
    error.addNote(suggestion);
    throw error;
}

ValuePtr Context::valueOfVariable(std::string_view name) {
    Assignment* assignment = find(name);
    if (assignment == nullptr) {
        throwUnknown(name, false);
    }
    return resolution_.valueOf(*assignment);
}

void Context::resolveHints() {
    for (auto& [name, assignment] : assignments_) {
        if (assignment.modifier != AssignModifier::Hint || !assignment.value) {
            continue;
        }
        const std::optional<IdentifierPath> path = hintPath(assignment.value);
        if (!path) {
            throw VeskException("Invalid hint '" + assignment.value->toString() +
                                "': expected an identifier.");
        }
        if (!succeeds([&] { assignment.value = resolveIdentifier(*path)->clone(); })) {
            assignment.value = std::make_shared<VeskString>(path->toDisplayString());
        }
        assignment.state = ResolveState::Resolved;
    }
    resolution_.forget();
}

void Context::resolveVariables() {
    console::trace("Resolving variables.\n");
    std::erase_if(assignments_,
                  [](const auto& entry) { return entry.second.modifier == AssignModifier::Hint; });
    resolveAll();
}

void Context::resolveAll() {
    evaluateConditions();
    for (const HeldAppend& held : heldAppends_.takeAll()) {
        try {
            placeHeldAppend(held);
        } catch (...) {
            rethrowWithNote(held.assignment.place, variableNote(held.assignment));
        }
    }
    resolution_.begin();
    for (auto& [name, assignment] : assignments_) {
        try {
            resolution_.resolve(assignment);
        } catch (...) {
            rethrowWithNote(assignment.place, variableNote(assignment));
        }
    }
}

}  // namespace Vesk
