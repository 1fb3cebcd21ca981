// How assignments merge: by the rules of the values while one body is filled, with patience where
// the layers of a target meet.

#include <algorithm>

#include "platform/files.h"
#include "types/context.h"
#include "types/errors.h"
#include "types/identifier_value.h"
#include "types/list_value.h"
#include "types/string_values.h"

namespace Vesk {
namespace {

bool isIdentifier(const ValuePtr& value) {
    return valueAs<VeskIdentifier>(value.get()) != nullptr;
}

bool isPath(const ValuePtr& value) {
    return valueAs<VeskPathString>(value.get()) != nullptr;
}

/// Whether a += to this value joins texts. A path is text too, but becomes a list of paths.
bool isText(const ValuePtr& value) {
    return valueAs<VeskBaseString>(value.get()) != nullptr && !isPath(value);
}

/// Whether the unresolved value, joined to a text, would leave something behind: what a name stands
/// for, the directory of a path, the other words of a cross reference in a list.
bool losesMeaningAsText(const VeskValue& value) {
    if (const auto* path = valueAs<VeskPathString>(&value)) {
        return !platform::isAbsolutePath(path->text);
    }
    if (const auto* list = valueAs<VeskList>(&value)) {
        return std::any_of(list->items.begin(), list->items.end(), [](const ValuePtr& item) {
            return item &&
                   (isIdentifier(item) || item->toString().find("#{") != std::string::npos ||
                    losesMeaningAsText(*item));
        });
    }
    return false;
}

/// What a += appends to `stored`: `added` itself, unless a path is stored. A path literal is one
/// path, so it becomes a list of paths first; the words of a string and the strings of a list are
/// paths of the same directory then.
ValuePtr readyToAppend(ValuePtr& stored, const ValuePtr& added) {
    const bool hasElements = valueAs<VeskBaseString>(added.get()) != nullptr ||
                             valueAs<VeskList>(added.get()) != nullptr;
    if (!isPath(stored) || !hasElements) {
        return added;
    }
    const auto path = std::static_pointer_cast<VeskPathString>(stored);
    stored = std::make_shared<VeskList>(std::vector<ValuePtr>{path});
    if (isPath(added)) {
        return added;
    }
    auto paths = std::make_shared<VeskList>(elementsOf(*added));
    for (ValuePtr& element : paths->items) {
        if (isText(element)) {
            element = path->makeString(element->toString());
        }
    }
    return paths;
}

void appendValue(ValuePtr& stored, const ValuePtr& added) {
    const ValuePtr ready = readyToAppend(stored, added);
    stored->append(*ready);
}

/// Stores a value where there was none. After a bare name it is all that the variable holds, so it
/// is assigned.
void storeFirstValue(Assignment& stored, const Assignment& assignment) {
    stored.value = assignment.value;
    if (stored.op == AssignOperator::None && stored.value) {
        stored.op = AssignOperator::Assign;
    }
}

void replaceValue(Assignment& stored, const Assignment& assignment) {
    stored.value = assignment.op == AssignOperator::None ? nullptr : assignment.value;
    stored.op = assignment.op;
    stored.place = assignment.place;
    stored.exported = nullptr;
    stored.written.clear();
}

/// What dependants that merge outputs are to append after `^name += value`: what was appended with
/// "^", unless the whole variable is an output.
void exportAppend(Assignment& stored, bool wholeIsOutput, const Assignment& assignment) {
    // What came with a part of its own keeps it: a merged dependency's outputs, for example.
    const ValuePtr& value = assignment.exported ? assignment.exported : assignment.value;
    if (assignment.modifier != AssignModifier::Output || wholeIsOutput) {
        return;
    }
    if (stored.exported) {
        appendValue(stored.exported, value);
    } else {
        stored.exported = value->deepCopy();
    }
}

/// Remembers the single assignments, as what they give may depend on what lies under them.
void noteAppend(Assignment& stored, Assignment before, const Assignment& assignment) {
    if (stored.written.empty()) {
        stored.written.push_back(std::move(before));
    }
    stored.written.push_back(assignment);
}

void mergeAppend(Assignment& stored, const Assignment& assignment, bool keepWritten) {
    if (!assignment.value) {
        return;
    }
    const bool wholeIsOutput = stored.modifier == AssignModifier::Output && !stored.exported;
    if (stored.value) {
        const bool dependsOnBase =
            stored.op == AssignOperator::Append || stored.op == AssignOperator::AssignEmpty;
        const bool notes = keepWritten && dependsOnBase;
        Assignment before = notes && stored.written.empty() ? deepCopy(stored) : Assignment{};
        appendValue(stored.value, assignment.value);
        if (notes) {
            noteAppend(stored, std::move(before), assignment);
        }
    } else {
        storeFirstValue(stored, assignment);
    }
    exportAppend(stored, wholeIsOutput, assignment);
}

/// Merges the value; false when the new assignment leaves what is stored as it is.
bool mergeValue(Assignment& stored, const Assignment& assignment, bool keepWritten) {
    switch (assignment.op) {
        case AssignOperator::Assign:
        case AssignOperator::None:
            replaceValue(stored, assignment);
            return true;
        case AssignOperator::Append:
            mergeAppend(stored, assignment, keepWritten);
            return true;
        case AssignOperator::AssignEmpty:
            if (stored.value) {
                return false;
            }
            storeFirstValue(stored, assignment);
            return true;
    }
    throw AssignmentException(stored.toDisplayString(), assignment.toDisplayString());
}

/// The mode for one of the assignments that another is the sum of.
ModifierMode partMode(const Assignment& part, ModifierMode mode) {
    return mode == ModifierMode::Copy ? writtenMode(part) : mode;
}

void mergeInto(Assignment& stored, const Assignment& assignment, ModifierMode mode,
               bool keepWritten) {
    if (stored.name != assignment.name || mode > ModifierMode::Clear) {
        throw AssignmentException(stored.toDisplayString(), assignment.toDisplayString());
    }
    if (stored.value && !assignment.written.empty()) {
        for (const Assignment& part : assignment.written) {
            mergeInto(stored, part, partMode(part, mode), keepWritten);
        }
        return;
    }
    if (mergeValue(stored, assignment, keepWritten) && mode != ModifierMode::Keep) {
        stored.modifier = mode == ModifierMode::Copy ? assignment.modifier : AssignModifier::None;
    }
    stored.state = ResolveState::Unresolved;
}

}  // namespace

void Context::merge(const Assignment& assignment, ModifierMode mode, bool keepWritten) {
    const auto [position, inserted] = assignments_.try_emplace(assignment.name, assignment);
    Assignment& stored = position->second;
    const VeskList* list = inserted ? nullptr : valueAs<VeskList>(stored.value.get());
    const std::size_t known = list != nullptr ? list->items.size() : 0;
    if (!inserted) {
        mergeInto(stored, assignment, mode, keepWritten);
    } else if (assignment.op == AssignOperator::Append && assignment.value &&
               !assignment.exported) {
        exportAppend(stored, false, assignment);
    }
    if (!keepWritten) {
        stored.written.clear();
    }
    lookedUp_.clear();
    takeOver(stored.value, list == stored.value.get() ? known : 0);
    takeOver(stored.exported, 0);
}

/// Makes this context the one that answers for names in the value. Of a list that has grown only
/// what is new is looked at: many appends to a long list must not cost its length each.
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
    merge(assignment, mode, true);
}

bool Context::hasHeldAppends(std::string_view name) const {
    return std::any_of(heldAppends_.begin(), heldAppends_.end(), [name](const HeldAppend& held) {
        return equalsIgnoringCase(held.assignment.name, name);
    });
}

void Context::dropHeldAppends(std::string_view name) {
    std::erase_if(heldAppends_, [name](const HeldAppend& held) {
        return equalsIgnoringCase(held.assignment.name, name);
    });
}

bool Context::mustHold(const Assignment& assignment) const {
    if (assignment.op != AssignOperator::Append || !assignment.value) {
        return false;
    }
    if (hasHeldAppends(assignment.name)) {
        return true;
    }
    const Assignment* stored = find(assignment.name);
    return stored != nullptr && stored->value &&
           (isIdentifier(stored->value) || isIdentifier(assignment.value) ||
            (isText(stored->value) && losesMeaningAsText(*assignment.value)));
}

void Context::mergeOrHold(const Assignment& assignment, ModifierMode mode, bool keepWritten) {
    const Assignment* stored = assignment.written.empty() ? nullptr : find(assignment.name);
    if (stored != nullptr && stored->value) {
        for (const Assignment& part : assignment.written) {
            mergeOrHold(part, partMode(part, mode), keepWritten);
        }
        return;
    }
    if (mustHold(assignment)) {
        heldAppends_.push_back({assignment, mode});
        return;
    }
    if (assignment.op == AssignOperator::Assign || assignment.op == AssignOperator::None) {
        dropHeldAppends(assignment.name);
    }
    merge(assignment, mode, keepWritten);
}

void Context::mergeAssignment(const Assignment& assignment, ModifierMode mode) {
    mergeOrHold(assignment, mode, false);
}

void Context::mergeContext(const Context& other, ModifierMode mode) {
    const std::shared_ptr<Context> copy = other.deepCopy();
    for (const auto& [name, assignment] : copy->assignments_) {
        mergeOrHold(assignment, mode, true);
    }
    for (const HeldAppend& held : copy->heldAppends_) {
        mergeOrHold(held.assignment, mode, true);
    }
    for (const Condition& condition : copy->conditions_) {
        conditions_.push_back(condition);
    }
}

}  // namespace Vesk
