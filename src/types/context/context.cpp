#include "types/context/context.h"

#include "base/console.h"
#include "types/context/context_value.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

constexpr int kEmptyKeysLine = 380;

}  // namespace

std::shared_ptr<Context> Context::deepCopy() const {
    auto copy = std::make_shared<Context>();
    for (const auto& [name, assignment] : assignments_) {
        Assignment& copied =
            copy->assignments_
                .emplace_hint(copy->assignments_.end(), name, Vesk::deepCopy(assignment))
                ->second;
        copy->takeOver(copied.value, 0);
        copy->takeOver(copied.exported, 0);
    }
    for (const HeldAppend& held : heldAppends_.all()) {
        copy->heldAppends_.add({Vesk::deepCopy(held.assignment), held.mode});
    }
    for (const Condition& condition : conditions_) {
        copy->conditions_.push_back(Vesk::deepCopy(condition));
    }
    copy->resolution_.continueFrom(resolution_);
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
    heldAppends_.drop(name);
    const auto position = assignments_.find(name);
    if (position == assignments_.end()) {
        return false;
    }
    assignments_.erase(position);
    resolution_.forget();
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
        resolution_.setEnclosing(enclosing);
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
    console::write(level, console::colour::kNormal, "{");
    for (const auto& [name, assignment] : assignments_) {
        std::string line(withModifiers ? sourceText(assignment.modifier) : "");
        console::write(level, console::colour::kNormal, line + assignment.toDisplayString());
    }
    console::write(level, console::colour::kNormal, "}");
    console::write(level, console::colour::kNormal, "");
}

}  // namespace Vesk
