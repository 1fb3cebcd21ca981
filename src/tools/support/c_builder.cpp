#include "tools/support/c_builder.h"

#include <algorithm>
#include <set>

#include "platform/files.h"
#include "tools/support/file_patterns.h"
#include "tools/support/libraries.h"
#include "tools/support/target_paths.h"
#include "tools/support/value_lists.h"
#include "tools/variables.h"
#include "types/values/simple_values.h"

namespace Vesk {

namespace {

/// What says how to link with a target. Only its builder knows whether that reaches dependants: an
/// executable that links a library is nothing that a dependant links.
std::set<CiString, CiLess> namesOfProducts() {
    std::set<CiString, CiLess> names;
    for (const RegisteredGroup& registered : registeredGroups()) {
        if (registered.group->role == VariableRole::Product) {
            for (const Variable& variable : registered.group->variables) {
                names.insert(variable.name);
            }
        }
    }
    return names;
}

}  // namespace

void addDeclaredOutputs(const TargetContext& target, std::vector<Assignment>& outputs) {
    static const std::set<CiString, CiLess> products = namesOfProducts();
    std::set<CiString, CiLess> given;
    for (const Assignment& output : outputs) {
        given.insert(output.name);
    }
    for (const auto& [name, assignment] : target.assignments()) {
        if (assignment.modifier == AssignModifier::Output && given.count(name) == 0 &&
            products.count(name) == 0) {
            outputs.push_back(assignment);
        }
    }
}

CBuilder::CBuilder(std::string name, AssignmentMap subjects)
    : Builder(std::move(subjects)), name_(std::move(name)) {}

RecipeSet CBuilder::createRecipes(TargetContext& target) {
    const BuildEnv environment(environmentSettings(target));
    RecipeSet set;
    std::tie(set.recipes, set.assignments) = doCreateRecipes(target, environment);
    for (Recipe& recipe : set.recipes) {
        recipe.workingDirectory = environment.settings().projectRoot;
    }
    addDeclaredOutputs(target, set.assignments);
    set.ok = true;
    postProcess(target, environment, set);
    return set;
}

void CBuilder::postProcess(TargetContext&, const BuildEnv&, RecipeSet&) const {}

LookedFor CBuilder::lookedFor(const TargetContext& target) const {
    // A resource script is read to find the files that it names.
    LookedFor wanted{hasEntries(target, "RC_FILES"), {}};
    for (const auto& [name, subject] : subjects()) {
        wanted.patterns =
            wanted.patterns || std::ranges::any_of(entriesOf(target, name.str()), isPattern);
    }
    if (hasEntries(target, "LIBS")) {
        const TargetPaths paths(target, BuildEnv(environmentSettings(target)));
        wanted.files = libraryCandidates(paths.absolute(entriesOf(target, "LIB_DIRS")),
                                         entriesOf(target, "LIBS"), paths.root());
    }
    return wanted;
}

std::shared_ptr<Context> CBuilder::complete(TargetContext&, int exitCode) {
    auto results = std::make_shared<Context>();
    results->addAssignment(
        resolvedAssignment("result", std::make_shared<VeskInt>(exitCode), AssignModifier::Output),
        ModifierMode::Copy);
    return results;
}

}  // namespace Vesk
