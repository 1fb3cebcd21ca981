#include "driver/dependency_outputs.h"

#include "base/console.h"
#include "types/context/context_value.h"
#include "types/values/list_value.h"

namespace Vesk {
namespace {

constexpr std::string_view kAmbiguous =
    "Names are case-insensitive; this may make dependency output ambiguous.";

std::shared_ptr<Context> nestedContext(const Context& context, const std::string& name) {
    const Assignment* assignment = context.find(name);
    const auto* value =
        assignment != nullptr ? valueAs<VeskContext>(assignment->value.get()) : nullptr;
    return value != nullptr ? value->context() : nullptr;
}

bool looksEqual(const ValuePtr& a, const ValuePtr& b) {
    return a && b && a->kind() == b->kind() && a->toDisplayString() == b->toDisplayString();
}

void addNested(Context& context, const std::string& name, std::shared_ptr<Context> nested) {
    context.addAssignment(
        resolvedAssignment(name, std::make_shared<VeskContext>(std::move(nested))),
        ModifierMode::Keep);
    context.find(name)->state = ResolveState::Resolved;
}

void warnOfSecondOutput(const std::string& dependency, const std::string& variable) {
    console::warning("Dependency output '{}::{}' collides with an existing dependency output. {}",
                     dependency, variable, kAmbiguous);
}

/// Adds outputs to lists of the same names.
void collect(const Context& outputs, Context& lists) {
    for (const auto& [name, assignment] : outputs.assignments()) {
        if (lists.find(name) == nullptr) {
            lists.addAssignment(
                resolvedAssignment(name, std::make_shared<VeskList>(), assignment.modifier),
                ModifierMode::Keep);
        }
        if (assignment.value) {
            lists.find(name)->value->append(*assignment.value);
        }
    }
}

/// Outputs of a second dependency of the same name, over those of the first.
std::shared_ptr<Context> combined(const Context& first, const Context& second,
                                  const std::string& name) {
    std::shared_ptr<Context> both = first.deepCopy();
    for (const auto& [variable, assignment] : second.assignments()) {
        if (first.find(variable) != nullptr) {
            warnOfSecondOutput(name, variable.str());
        }
        both->addAssignment(
            resolvedAssignment(variable, assignment.value ? assignment.value->deepCopy() : nullptr,
                               assignment.modifier),
            ModifierMode::Keep);
        both->find(variable)->state = ResolveState::Resolved;
    }
    return both;
}

}  // namespace

void DependencyOutputs::store(const std::string& name, const std::shared_ptr<Context>& outputs) {
    addNested(input_.context(), name, outputs);
    placed_.insert(name);
}

void DependencyOutputs::warnOfAlias(const std::string& alias) const {
    if (input_.context().find(alias) != nullptr) {
        console::warning(
            "Dependency output alias '{}' collides with an existing context variable. {}", alias,
            kAmbiguous);
    }
}

void DependencyOutputs::addUnderAlias(const DependencyOutput& dependency) {
    const std::string& alias = dependency.record.alias;
    warnOfAlias(alias);
    store(alias, dependency.outputs);
    shared_.erase(alias);
}

/// Several dependencies under one name: each variable is the list of their outputs of that name.
void DependencyOutputs::addToSharedAlias(const DependencyOutput& dependency) {
    const std::string& alias = dependency.record.alias;
    if (!shared_.contains(alias)) {
        warnOfAlias(alias);
        const auto earlier =
            placed_.contains(alias) ? nestedContext(input_.context(), alias) : nullptr;
        store(alias, std::make_shared<Context>());
        shared_.insert(alias);
        if (earlier) {
            collect(*earlier, *nestedContext(input_.context(), alias));
        }
    }
    collect(*dependency.outputs, *nestedContext(input_.context(), alias));
}

/// The nested context of another unit, made by the first dependency in it.
std::shared_ptr<Context> DependencyOutputs::unitContext(const DependencyOutput& dependency) {
    auto context = nestedContext(input_.context(), dependency.unit);
    if (!context || !placed_.contains(dependency.unit)) {
        context = context ? context->deepCopy() : std::make_shared<Context>();
        store(dependency.unit, context);
    }
    return context;
}

void DependencyOutputs::addUnderOwnName(const DependencyOutput& dependency) {
    Context& own = input_.context();
    const std::string& name = dependency.sameUnit ? dependency.target : dependency.unit;
    if (own.find(name) != nullptr && !nestedContext(own, name)) {
        console::warning(
            "Dependency output '{}::{}' collides with existing context variable '{}'. {}",
            dependency.unit, dependency.target, dependency.unit, kAmbiguous);
    }
    if (dependency.sameUnit) {
        const auto existing = nestedContext(own, name);
        store(name, existing ? combined(*existing, *dependency.outputs, name) : dependency.outputs);
        return;
    }
    const std::shared_ptr<Context> unit = unitContext(dependency);
    const auto existing = nestedContext(*unit, dependency.target);
    if (!existing && unit->find(dependency.target) != nullptr) {
        warnOfSecondOutput(dependency.unit, dependency.target);
    }
    addNested(*unit, dependency.target,
              existing ? combined(*existing, *dependency.outputs, dependency.target)
                       : dependency.outputs);
}

void DependencyOutputs::mergeOutputs(const DependencyOutput& dependency) {
    for (const auto& [name, assignment] : dependency.outputs->assignments()) {
        if (!assignment.value) {
            continue;
        }
        const bool isAppend = assignment.exported || assignment.op == AssignOperator::Append;
        Assignment moved = resolvedAssignment(
            name, (assignment.exported ? assignment.exported : assignment.value)->deepCopy(),
            AssignModifier::Output);
        moved.place = assignment.place;
        if (isAppend) {
            if (input_.context().find(name) == nullptr) {
                placed_.insert(name);
            }
            moved.op = AssignOperator::Append;
            input_.appendOutput(std::move(moved));
        } else {
            assignOutput(moved);
        }
    }
}

/// An output with "=": the last one stands. What tools make is no statement about the dependant, so
/// it is added in silence and yields to the dependant's own variables.
void DependencyOutputs::assignOutput(const Assignment& moved) {
    Context& own = input_.context();
    const Assignment* stored = own.find(moved.name);
    const bool isOwn = stored != nullptr && !placed_.contains(moved.name);
    const bool madeByTool = moved.place.line == 0;
    if (isOwn && madeByTool) {
        return;
    }
    if (stored != nullptr && !madeByTool && (isOwn || !looksEqual(stored->value, moved.value))) {
        console::warning("Dependency output '{}' collides with an existing context variable. {}",
                         moved.name, kAmbiguous);
    }
    own.mergeAssignment(moved, ModifierMode::Copy);
    own.find(moved.name)->state = ResolveState::Resolved;
    placed_.insert(moved.name);
}

void DependencyOutputs::add(const DependencyOutput& visited) {
    // Copies: what happens to them here must not reach another dependant.
    const DependencyOutput dependency{visited.record, visited.unit, visited.target,
                                      visited.sameUnit, visited.outputs->deepCopy()};
    switch (dependency.record.aliasKind) {
        case AliasKind::Single:
            addUnderAlias(dependency);
            break;
        case AliasKind::Merge:
            addToSharedAlias(dependency);
            break;
        case AliasKind::None:
            addUnderOwnName(dependency);
            break;
    }
    if (dependency.record.merge) {
        mergeOutputs(dependency);
    }
}

}  // namespace Vesk
