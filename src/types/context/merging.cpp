// How assignments get into a context: at once while one body is filled, held back if necessary
// where the layers of a target meet.

#include "types/context/assignment_merge.h"
#include "types/context/context.h"
#include "types/values/errors.h"
#include "types/values/list_value.h"
#include "types/values/value_size.h"

namespace Vesk {

void Context::merge(const Assignment& assignment, ModifierMode mode, Parts parts) {
    const auto [position, inserted] = assignments_.try_emplace(assignment.name, assignment);
    Assignment& stored = position->second;
    const VeskList* list = inserted ? nullptr : valueAs<VeskList>(stored.value.get());
    const std::size_t known = list != nullptr ? list->items.size() : 0;
    if (inserted) {
        exportAppend(stored, assignment);
    } else {
        mergeInto(stored, assignment, mode, parts);
    }
    if (parts == Parts::forget) {
        stored.written.clear();
    }
    resolution_.forget();
    takeOver(stored.value, list == stored.value.get() ? known : 0);
    takeOver(stored.exported, 0);
}

/// Makes this context the resolver of names in the value. In a list that has grown, only new
/// elements are visited, so that many appends to a long list do not each cost its whole length.
void Context::takeOver(const ValuePtr& value, std::size_t known) {
    auto* list = known > 0 ? valueAs<VeskList>(value.get()) : nullptr;
    if (list == nullptr) {
        if (Resolvable* resolvable = resolvableOf(value)) {
            resolvable->setResolver(this);
        }
        return;
    }
    for (std::size_t i = known; i < list->items.size(); ++i) {
        if (Resolvable* resolvable = resolvableOf(list->items[i])) {
            resolvable->setResolver(this);
        }
    }
}

void Context::addAssignment(const Assignment& assignment, ModifierMode mode) {
    merge(assignment, mode, Parts::keep);
}

bool Context::mustHold(const Assignment& assignment) const {
    if (assignment.op != AssignOperator::Append || !assignment.value) {
        return false;
    }
    const Assignment* stored = find(assignment.name);
    return hasHeldAppends(assignment.name) ||
           (stored != nullptr && needsResolving(*stored, assignment));
}

void Context::mergeOrHold(const Assignment& assignment, ModifierMode mode, Parts parts) {
    const Assignment* stored = assignment.written.empty() ? nullptr : find(assignment.name);
    if (stored != nullptr && stored->value) {
        for (const Assignment& part : assignment.written) {
            mergeOrHold(part, partMode(part, mode), parts);
        }
        return;
    }
    if (mustHold(assignment)) {
        heldAppends_.add({assignment, mode});
        return;
    }
    if (assignment.op == AssignOperator::Assign || assignment.op == AssignOperator::None) {
        heldAppends_.drop(assignment.name);
    }
    merge(assignment, mode, parts);
}

void Context::mergeAssignment(const Assignment& assignment, ModifierMode mode) {
    mergeOrHold(assignment, mode, Parts::forget);
}

void Context::mergeContext(const Context& other, ModifierMode mode) {
    const std::shared_ptr<Context> copy = other.deepCopy();
    for (const auto& [name, assignment] : copy->assignments_) {
        mergeOrHold(assignment, mode, Parts::keep);
    }
    for (const HeldAppend& held : copy->heldAppends_.all()) {
        mergeOrHold(held.assignment, mode, Parts::keep);
    }
    conditions_.insert(conditions_.end(), copy->conditions_.begin(), copy->conditions_.end());
}

void Context::placeHeldAppend(const HeldAppend& held) {
    Assignment addition = held.assignment;
    addition.value = resolution_.resolvedCopy(addition);
    if (Assignment* stored = find(addition.name)) {
        resolution_.follow(stored->value, addition.name);
        resolution_.follow(stored->exported, addition.name);
    }
    merge(addition, held.mode, Parts::forget);
    checkSize(*find(addition.name)->value);
}

void Context::placeHeldAppends() {
    for (HeldAppend& held : heldAppends_.takeAll()) {
        if (hasHeldAppends(held.assignment.name)) {
            heldAppends_.add(std::move(held));  // keeps its place behind one that still waits
            continue;
        }
        try {
            placeHeldAppend(held);
            continue;
        } catch (const NotFoundException&) {
        } catch (const MissingVariable&) {
        } catch (const NotAContext&) {
        } catch (const IndexException&) {}
        heldAppends_.add(std::move(held));
    }
}

}  // namespace Vesk
