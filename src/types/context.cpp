#include "types/context.h"

#include <algorithm>

#include "base/console.h"
#include "platform/files.h"
#include "types/context_value.h"
#include "types/errors.h"
#include "types/identifier_value.h"
#include "types/list_value.h"
#include "types/string_values.h"

namespace Vesk {
namespace {

constexpr int kEmptyKeysLine = 380;

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

/// Merges the value; false when the new assignment leaves what is stored as it is.
bool mergeValue(Assignment& stored, const Assignment& assignment) {
    switch (assignment.op) {
        case AssignOperator::Assign:
            stored.value = assignment.value;
            stored.op = AssignOperator::Assign;
            stored.exported = nullptr;
            return true;
        case AssignOperator::Append:
            if (stored.value && assignment.value) {
                stored.value->append(*assignment.value);
            } else if (assignment.value) {
                stored.value = assignment.value;
            }
            return true;
        case AssignOperator::AssignEmpty:
            if (stored.value) {
                return false;
            }
            stored.value = assignment.value;
            return true;
        case AssignOperator::None:
            stored.value = nullptr;
            stored.exported = nullptr;
            return true;
    }
    throw AssignmentException(stored.toDisplayString(), assignment.toDisplayString());
}

void mergeInto(Assignment& stored, const Assignment& assignment, ModifierMode mode) {
    if (stored.name != assignment.name || mode > ModifierMode::Clear) {
        throw AssignmentException(stored.toDisplayString(), assignment.toDisplayString());
    }
    if (mergeValue(stored, assignment)) {
        if (mode != ModifierMode::Keep) {
            stored.modifier =
                mode == ModifierMode::Copy ? assignment.modifier : AssignModifier::None;
        }
    }
    stored.state = ResolveState::Unresolved;
}

/// What dependants that merge outputs are to append after `^name += value`.
void exportAppend(Assignment& stored, const ValuePtr& exportedBefore, bool wholeIsOutput,
                  const ValuePtr& value) {
    if (wholeIsOutput) {
        return;
    }
    if (exportedBefore) {
        stored.exported = exportedBefore;
        const ValuePtr added = readyToAppend(stored.exported, value);
        stored.exported->append(*added);
    } else {
        stored.exported = deepCopy(*value);
    }
}

}  // namespace

void Context::addAssignment(const Assignment& assignment, ModifierMode mode) {
    const auto [position, inserted] = assignments_.try_emplace(assignment.name, assignment);
    Assignment& stored = position->second;
    if (!inserted) {
        mergeInto(stored, assignment, mode);
    }
    lookedUp_.clear();
    if (Resolvable* resolvable = resolvableOf(stored.value)) {
        resolvable->setResolver(this);
    }
}

bool Context::hasHeldAppends(std::string_view name) const {
    return std::any_of(heldAppends_.begin(), heldAppends_.end(), [name](const HeldAppend& held) {
        return equalsIgnoringCase(held.assignment.name, name);
    });
}

std::vector<Assignment> Context::heldAppends() const {
    std::vector<Assignment> appends;
    appends.reserve(heldAppends_.size());
    for (const HeldAppend& held : heldAppends_) {
        appends.push_back(held.assignment);
    }
    return appends;
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

void Context::mergeAssignment(const Assignment& assignment, ModifierMode mode) {
    if (mustHold(assignment)) {
        heldAppends_.push_back({assignment, mode});
        return;
    }
    mergeNow(assignment, mode);
}

void Context::mergeNow(const Assignment& assignment, ModifierMode mode) {
    const bool replaces =
        assignment.op == AssignOperator::Assign || assignment.op == AssignOperator::None;
    if (replaces && !heldAppends_.empty()) {
        std::erase_if(heldAppends_, [&](const HeldAppend& held) {
            return held.assignment.name == assignment.name;
        });
    }
    if (assignment.op != AssignOperator::Append || !assignment.value) {
        addAssignment(assignment, mode);
        return;
    }
    Assignment* before = find(assignment.name);
    Assignment addition = assignment;
    if (before != nullptr) {
        addition.value = readyToAppend(before->value, assignment.value);
    }
    if (assignment.modifier != AssignModifier::Output) {
        addAssignment(addition, mode);
        return;
    }
    const ValuePtr exported = before != nullptr ? before->exported : nullptr;
    const bool wholeIsOutput =
        before != nullptr && before->modifier == AssignModifier::Output && !before->exported;
    addAssignment(addition, mode);
    Assignment& stored = *find(assignment.name);
    // What came with the parts of its own keeps them: a merged dependency's outputs, for example.
    exportAppend(stored, exported, wholeIsOutput,
                 assignment.exported ? assignment.exported : assignment.value);
    if (Resolvable* resolvable = resolvableOf(stored.exported)) {
        resolvable->setResolver(this);
    }
}

void Context::adopt(Context& other, ModifierMode mode) {
    for (const auto& [name, assignment] : other.assignments_) {
        mergeAssignment(assignment, mode);
    }
    for (const HeldAppend& held : other.heldAppends_) {
        mergeAssignment(held.assignment, mode);
    }
    for (const Condition& condition : other.conditions_) {
        conditions_.push_back(condition);
    }
}

void Context::mergeContext(const Context& other, ModifierMode mode) {
    adopt(*other.deepCopy(), mode);
}

std::shared_ptr<Context> Context::deepCopy() const {
    auto copy = std::make_shared<Context>();
    for (const auto& [name, assignment] : assignments_) {
        copy->addAssignment(Vesk::deepCopy(assignment), ModifierMode::Copy);
    }
    for (const HeldAppend& held : heldAppends_) {
        copy->heldAppends_.push_back({Vesk::deepCopy(held.assignment), held.mode});
    }
    for (const Condition& condition : conditions_) {
        copy->conditions_.push_back(Vesk::deepCopy(condition));
    }
    copy->enclosing_ = enclosing_;
    copy->resolving_ = resolving_;
    copy->silent_ = silent_;
    return copy;
}

const Assignment* Context::find(std::string_view name) const {
    const auto position = assignments_.find(name);
    return position == assignments_.end() ? nullptr : &position->second;
}

Assignment* Context::find(std::string_view name) {
    const auto position = assignments_.find(name);
    return position == assignments_.end() ? nullptr : &position->second;
}

bool Context::erase(std::string_view name) {
    const auto position = assignments_.find(name);
    if (position == assignments_.end()) {
        return false;
    }
    assignments_.erase(position);
    lookedUp_.clear();
    return true;
}

std::optional<std::string> Context::textOf(std::string_view name) const {
    const Assignment* assignment = find(name);
    if (assignment == nullptr || !assignment->value) {
        return std::nullopt;
    }
    return assignment->value->toString();
}

Assignment& Context::storedAt(const std::vector<Key>& keys) {
    Assignment* first = find(std::get<NameKey>(keys.front()).name);
    if (first == nullptr) {
        throwUnknown(std::get<NameKey>(keys.front()).name, true);
    }
    ValuePtr value = first->value;
    for (std::size_t i = 1; value && i + 1 < keys.size(); ++i) {
        value = value->at(keys[i]);
    }
    const auto* inner = valueAs<VeskContext>(value.get());
    if (inner == nullptr) {
        throw NotAContext();
    }
    return inner->context()->getAssignment({keys.back()});
}

Assignment& Context::getAssignment(const std::vector<Key>& keys) {
    if (keys.empty()) {
        throw InternalError(kContextSourceUnit, kEmptyKeysLine,
                            "struct Vesk::Assignment &__cdecl Vesk::Context::getAssignment(const "
                            "class std::vector<Vesk::Key> &)");
    }
    for (const Key* key : {&keys.front(), &keys.back()}) {
        if (!std::holds_alternative<NameKey>(*key)) {
            throw IndexException("{...}", *key);
        }
    }
    if (keys.size() > 1) {
        return storedAt(keys);
    }
    const std::string& name = std::get<NameKey>(keys.front()).name;
    Assignment* assignment = find(name);
    if (assignment == nullptr) {
        throwUnknown(name, false);
    }
    return *assignment;
}

void Context::setEnclosing(Context* enclosing) noexcept {
    if (enclosing != this) {
        enclosing_ = enclosing;
    }
}

std::vector<std::string> Context::names() const {
    std::vector<std::string> names;
    names.reserve(assignments_.size());
    for (const auto& [name, assignment] : assignments_) {
        names.push_back(name.str());
    }
    return names;
}

std::string Context::dump() const {
    std::string text = "{\n";
    for (const auto& [name, assignment] : assignments_) {
        text += assignment.toDisplayString() + "\n";
    }
    return text + "}";
}

void Context::print(int level) const {
    printBlock(level, false);
}

void Context::printBlock(int level, bool withModifiers) const {
    if (!console::enabled(level)) {
        return;
    }
    constexpr std::string_view kModifiers[] = {"", "^", "!", "?"};
    console::write(level, console::colour::kNormal, "{");
    for (const auto& [name, assignment] : assignments_) {
        std::string line;
        if (withModifiers) {
            line = kModifiers[static_cast<std::size_t>(assignment.modifier)];
        }
        console::write(level, console::colour::kNormal, line + assignment.toDisplayString());
    }
    console::write(level, console::colour::kNormal, "}");
    console::write(level, console::colour::kNormal, "");
}

}  // namespace Vesk
