#include "types/context/assignment_merge.h"

#include <algorithm>

#include "platform/files.h"
#include "types/values/errors.h"
#include "types/values/identifier_value.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

bool isIdentifier(const ValuePtr& value) {
    return valueAs<VeskIdentifier>(value.get()) != nullptr;
}

bool isPath(const ValuePtr& value) {
    return valueAs<VeskPathString>(value.get()) != nullptr;
}

/// Whether a += to this value joins texts. A path is text as well, but becomes a list of paths.
bool isText(const ValuePtr& value) {
    return valueAs<VeskBaseString>(value.get()) != nullptr && !isPath(value);
}

/// Whether joining the unresolved value to a text would lose something: what a name stands for, the
/// directory of a path, the other words of a cross reference in a list.
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

/// What a += appends to `stored`. This is `added` itself unless a path is stored: a path literal is
/// one path, so it becomes a list of paths first, and the words of a string or the strings of a
/// list become paths of the same directory.
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

/// Stores a value where there was none. After a bare name this is all that the variable holds, so
/// the operator becomes an assignment.
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

/// After `^name += value`, what dependants that merge outputs are to append: everything appended
/// with "^".
void addToExported(Assignment& stored, const Assignment& assignment) {
    if (assignment.modifier != AssignModifier::Output) {
        return;
    }
    // An assignment that brings its own part keeps it, such as a merged dependency's outputs.
    const ValuePtr& value = assignment.exported ? assignment.exported : assignment.value;
    if (stored.exported) {
        appendValue(stored.exported, value);
    } else {
        stored.exported = value->deepCopy();
    }
}

/// Remembers the single assignments, since their result may depend on what lies under them.
void noteAppend(Assignment& stored, Assignment before, const Assignment& assignment) {
    if (stored.written.empty()) {
        stored.written.push_back(std::move(before));
    }
    stored.written.push_back(assignment);
}

void mergeAppend(Assignment& stored, const Assignment& assignment, Parts parts) {
    if (!assignment.value) {
        return;
    }
    const bool wholeIsOutput = stored.modifier == AssignModifier::Output && !stored.exported;
    if (stored.value) {
        const bool dependsOnBase =
            stored.op == AssignOperator::Append || stored.op == AssignOperator::AssignEmpty;
        const bool notes = parts == Parts::keep && dependsOnBase;
        Assignment before = notes && stored.written.empty() ? deepCopy(stored) : Assignment{};
        appendValue(stored.value, assignment.value);
        if (notes) {
            noteAppend(stored, std::move(before), assignment);
        }
    } else {
        storeFirstValue(stored, assignment);
    }
    if (!wholeIsOutput) {
        addToExported(stored, assignment);
    }
}

/// Merges the value. False if the new assignment leaves the stored one as it is.
bool mergeValue(Assignment& stored, const Assignment& assignment, Parts parts) {
    switch (assignment.op) {
        case AssignOperator::Assign:
        case AssignOperator::None:
            replaceValue(stored, assignment);
            return true;
        case AssignOperator::Append:
            mergeAppend(stored, assignment, parts);
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

}  // namespace

ModifierMode partMode(const Assignment& part, ModifierMode mode) {
    return mode == ModifierMode::Copy ? writtenMode(part) : mode;
}

void mergeInto(Assignment& stored, const Assignment& assignment, ModifierMode mode, Parts parts) {
    if (stored.name != assignment.name || mode > ModifierMode::Clear) {
        throw AssignmentException(stored.toDisplayString(), assignment.toDisplayString());
    }
    if (stored.value && !assignment.written.empty()) {
        for (const Assignment& part : assignment.written) {
            mergeInto(stored, part, partMode(part, mode), parts);
        }
        return;
    }
    if (mergeValue(stored, assignment, parts) && mode != ModifierMode::Keep) {
        stored.modifier = mode == ModifierMode::Copy ? assignment.modifier : AssignModifier::None;
    }
    stored.state = ResolveState::Unresolved;
}

void exportAppend(Assignment& stored, const Assignment& assignment) {
    if (assignment.op == AssignOperator::Append && assignment.value && !assignment.exported) {
        addToExported(stored, assignment);
    }
}

bool needsResolving(const Assignment& stored, const Assignment& appended) {
    return stored.value && (isIdentifier(stored.value) || isIdentifier(appended.value) ||
                            (isText(stored.value) && losesMeaningAsText(*appended.value)));
}

}  // namespace Vesk
