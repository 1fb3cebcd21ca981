#include "tools/matcher.h"

#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "types/values/identifier_value.h"

namespace Vesk {

namespace {

bool isUnresolved(const VeskValue& value) {
    return valueAs<VeskIdentifier>(&value) != nullptr;
}

/// Kinds of value that cannot be compared with each other count as different.
bool equalValues(const ValuePtr& target, const ValuePtr& tool) {
    if (!target || !tool || isUnresolved(*target) || isUnresolved(*tool)) {
        return false;
    }
    try {
        return target->equals(*tool);
    } catch (const VeskException&) {
        return false;
    }
}

MatchKind compareWant(const Assignment& target, const Assignment& want) {
    if (equalValues(target.value, want.value)) {
        return MatchKind::ExactMatch;
    }
    const bool isOutput = target.modifier == AssignModifier::Output;
    return isOutput && !target.value ? MatchKind::NoMatch : MatchKind::PartialMatch;
}

void logKind(const CiString& tool, MatchKind kind, const Assignment& target) {
    using console::level::kMatch;
    const int colour = console::colour::kReport;
    switch (kind) {
        case MatchKind::ExactMatch:
            console::message(kMatch, colour, "{}::match - ExactMatch: key='{}' value='{}'", tool,
                             target.name, target.value->toString());
            break;
        case MatchKind::NoMatch:
            console::message(kMatch, colour, "{}::match - NoMatch: key='{}'", tool, target.name);
            break;
        case MatchKind::PartialMatch:
            console::message(kMatch, colour, "{}::match - PartialMatch: key='{}'", tool,
                             target.name);
            break;
    }
}

}  // namespace

Matcher::Matcher(CiString name, std::string typeWord, const AssignmentMap& wants,
                 const AssignmentMap& needs, const AssignmentMap& must, const AssignmentMap& others)
    : name_(std::move(name)), typeWord_(std::move(typeWord)), wants_(wants), needs_(needs) {
    for (const auto& [key, assignment] : must) {
        const auto need = needs_.find(key);
        if (need != needs_.end()) {
            need->second = assignment;
        } else {
            wants_.insert_or_assign(key, assignment);
        }
    }
    for (const auto& [key, assignment] : others) {
        wants_.insert_or_assign(key, assignment);
    }

    declared_ = must;
    declared_.insert(others.begin(), others.end());
    Assignment type = textAssignment("tool_type", typeWord_);
    declared_.insert_or_assign(type.name, std::move(type));
}

MatchResult Matcher::match(const Context& target, Comparison comparison) const {
    MatchResult result;
    if (needsSatisfied(target)) {
        result = matchTool(target);
    }
    console::message(console::level::kMatch, console::colour::kReport,
                     "{}::match - result.note: {}", name_, matchNoteName(result.note));
    if (comparison == Comparison::Always || result.note == MatchNote::BuildPossible ||
        console::enabled(console::level::kMatch)) {
        compareWants(target, result);
    }
    return result;
}

bool Matcher::needsSatisfied(const Context& target) const {
    for (const auto& [key, need] : needs_) {
        if (!need.value && target.find(key) == nullptr) {
            return false;
        }
    }
    return true;
}

// Tools want few variables and targets have many, so this walks the wants. Both are in name order,
// so the outcome and the log are those of a walk over the target.
void Matcher::compareWants(const Context& target, MatchResult& result) const {
    const bool logs = console::enabled(console::level::kMatch);
    for (const auto& [key, want] : wants_) {
        const Assignment* assignment = target.find(key);
        if (assignment == nullptr) {
            continue;
        }
        const auto [entry, isNew] =
            result.matches.try_emplace(assignment->name, MatchKind::NoMatch);
        if (!isNew && entry->second != MatchKind::NoMatch) {
            continue;
        }
        entry->second = compareWant(*assignment, want);
        if (logs) {
            logKind(name_, entry->second, *assignment);
        }
    }
}

MatchResult Matcher::matchTool(const Context&) const {
    return {};
}

std::string Matcher::description() const {
    std::string text = fmt::format("{} '{}'", typeWord_, name_);
    const auto toolchain = declared_.find("toolchain_name");
    if (toolchain != declared_.end() && toolchain->second.value) {
        text += fmt::format(" ({})", toolchain->second.value->toString());
    }
    return text;
}

std::vector<CiString> Matcher::comparedNames() const {
    std::vector<CiString> names;
    for (const auto& [key, want] : wants_) {
        if (want.value) {
            names.push_back(key);
        }
    }
    return names;
}

}  // namespace Vesk
