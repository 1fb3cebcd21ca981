#include "driver/dependency_outputs.h"

#include "base/console.h"
#include "types/context_value.h"
#include "types/list_value.h"

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

void addNested(Context& context, const std::string& name, std::shared_ptr<Context> nested) {
    context.addAssignment(
        resolvedAssignment(name, std::make_shared<VeskContext>(std::move(nested))),
        ModifierMode::Keep);
    context.find(name)->state = ResolveState::Resolved;
}

/// Outputs of a second dependency of the same name, over those of the first.
std::shared_ptr<Context> combined(const Context& first, const Context& second,
                                  const std::string& name) {
    const std::shared_ptr<Context> both = first.deepCopy();
    for (const auto& [variable, assignment] : second.assignments()) {
        if (first.find(variable) != nullptr) {
            console::warning(
                "Dependency output '{}::{}' collides with an existing dependency output. {}", name,
                variable, kAmbiguous);
        }
        both->addAssignment(
            resolvedAssignment(variable, assignment.value ? deepCopy(*assignment.value) : nullptr,
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

void DependencyOutputs::addUnderAlias(const DependencyOutput& dependency) {
    const std::string& alias = dependency.record.alias;
    if (input_.context().find(alias) != nullptr) {
        console::warning(
            "Dependency output alias '{}' collides with an existing context variable. {}", alias,
            kAmbiguous);
    }
    store(alias, dependency.outputs);
}

/// Several dependencies under one name: each variable is the list of their outputs of that name.
void DependencyOutputs::addToSharedAlias(const DependencyOutput& dependency) {
    const std::string& alias = dependency.record.alias;
    if (placed_.count(alias) == 0) {
        if (input_.context().find(alias) != nullptr) {
            console::warning(
                "Dependency output alias '{}' collides with an existing context variable. {}",
                alias, kAmbiguous);
        }
        store(alias, std::make_shared<Context>());
    }
    const std::shared_ptr<Context> shared = nestedContext(input_.context(), alias);
    for (const auto& [name, assignment] : dependency.outputs->assignments()) {
        if (shared->find(name) == nullptr) {
            shared->addAssignment(
                resolvedAssignment(name, std::make_shared<VeskList>(), assignment.modifier),
                ModifierMode::Keep);
        }
        if (assignment.value) {
            shared->find(name)->value->append(*assignment.value);
        }
    }
}

/// The nested context of another unit, made by the first dependency in it.
std::shared_ptr<Context> DependencyOutputs::unitContext(const DependencyOutput& dependency) {
    auto context = nestedContext(input_.context(), dependency.unit);
    if (!context || placed_.count(dependency.unit) == 0) {
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
            name, deepCopy(assignment.exported ? *assignment.exported : *assignment.value),
            AssignModifier::Output);
        if (isAppend) {
            moved.op = AssignOperator::Append;
            input_.appendOutput(std::move(moved));
        } else if (input_.context().find(name) == nullptr) {
            input_.context().addAssignment(moved, ModifierMode::Copy);
            placed_.insert(name);
        } else if (placed_.count(name) == 0) {
            console::warning(
                "Dependency output '{}' collides with an existing context variable. {}", name,
                kAmbiguous);
        }
    }
}

void DependencyOutputs::add(const DependencyOutput& dependency) {
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
