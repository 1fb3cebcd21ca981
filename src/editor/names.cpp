#include "editor/names.h"

#include <algorithm>
#include <set>

#include "base/ci_string.h"
#include "base/text.h"
#include "tools/tool_registry.h"

namespace Vesk::editor {
namespace {

bool begins(const Read& read, std::string_view name) {
    return equalsIgnoringCase(read.path.front().text, name);
}

std::set<CiString, CiLess> documentedNames() {
    std::set<CiString, CiLess> names;
    for (const RegisteredGroup& registered : variableGroups()) {
        for (const Variable& variable : registered.group->variables) {
            names.emplace(std::string(variable.name));
        }
    }
    return names;
}

}  // namespace

DependencyTarget resolve(const DependencySymbol& dependency, const ProjectView& project,
                         const UnitView& unit) {
    DependencyTarget found;
    if (dependency.target.empty()) {
        return found;
    }
    found.project =
        dependency.project.empty() ? &project : project.findImport(dependency.project.text);
    if (found.project != nullptr) {
        found.unit =
            dependency.unit.empty() ? &unit : found.project->findUnit(dependency.unit.text);
    }
    if (found.unit != nullptr) {
        found.target = found.unit->find(dependency.target.text);
    }
    return found;
}

OutputOf outputOf(const Block& block, const Read& read, const UnitView& unit) {
    for (const DependencySymbol& dependency : block.dependencies) {
        if (!dependency.alias.empty()) {
            if (begins(read, dependency.alias.text)) {
                return {&dependency, 1};
            }
        } else if (dependency.unit.empty() || dependency.unit.text == unit.name) {
            if (begins(read, dependency.target.text)) {
                return {&dependency, 1};
            }
        } else if (read.path.size() > 1 && begins(read, dependency.unit.text) &&
                   equalsIgnoringCase(read.path[1].text, dependency.target.text)) {
            return {&dependency, 2};
        }
    }
    return {};
}

const std::vector<RegisteredGroup>& variableGroups() {
    static const std::vector<RegisteredGroup> groups = registeredGroups();
    return groups;
}

bool isDocumented(std::string_view name) {
    static const std::set<CiString, CiLess> names = documentedNames();
    return names.contains(name);
}

std::vector<std::string> likelyVariables(std::string_view name) {
    if (std::vector<std::string> meant = meantBy(name); !meant.empty()) {
        return meant;
    }
    std::vector<std::string> known;
    for (const RegisteredGroup& registered : variableGroups()) {
        for (const Variable& variable : registered.group->variables) {
            known.emplace_back(variable.name);
        }
    }
    return nearest(name, known);
}

std::vector<std::string> nearest(std::string_view name,
                                 const std::vector<std::string>& candidates) {
    std::string found = closestName(name, candidates);
    return found.empty() ? std::vector<std::string>{} : std::vector{std::move(found)};
}

void suggest(Diagnostic& diagnostic, const std::vector<std::string>& names) {
    if (names.empty()) {
        return;
    }
    diagnostic.notes.push_back(didYouMean(names));
    for (const std::string& name : names) {
        diagnostic.fixes.push_back({"Change to '" + name + "'", {{diagnostic.span, name}}});
    }
}

bool readsVariable(const Block& block, std::string_view name) {
    const auto reads = [name](const Read& read) { return begins(read, name); };
    return std::ranges::any_of(block.reads, reads) ||
           std::ranges::any_of(block.dependencies, [&](const DependencySymbol& dependency) {
               return std::ranges::any_of(dependency.arguments, reads) ||
                      (dependency.macro && reads(*dependency.macro));
           });
}

bool givesVariable(const Block& block, std::string_view name) {
    return std::ranges::any_of(block.writes, [name](const Write& write) {
        return !write.nested && equalsIgnoringCase(write.name.text, name);
    });
}

}  // namespace Vesk::editor
