#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/modes/modes.h"
#include "app/request.h"
#include "base/attempt.h"
#include "base/ci_string.h"
#include "base/console.h"
#include "base/text.h"
#include "driver/builtin_variables.h"
#include "driver/input_context.h"
#include "types/values/errors.h"

namespace Vesk::modes {
namespace {

constexpr std::string_view kDescription = "DESCRIPTION";

std::string textAsWritten(const Target& target) {
    std::string text;
    for (const Assignment& assignment : target.body().assignments) {
        if (equalsIgnoringCase(assignment.name, kDescription) && assignment.value) {
            text = assignment.value->toString();
        }
    }
    return text;
}

/// The target's own words about itself, if it has any.
std::string descriptionOf(const std::shared_ptr<const Target>& target,
                          const ImplicitLayers& implicit) {
    std::string text = textAsWritten(*target);
    if (text.empty() && target->body().conditions.empty()) {
        return text;
    }
    // It may need what only a build can tell, such as the outputs of dependencies.
    succeeds([&] {
        const auto context =
            InputContext::forToolChoice(target, target->name, {nullptr, implicit, {}});
        if (context->find(kDescription) != nullptr) {
            text = context->valueOfVariable(kDescription)->toString();
        }
    });
    return text;
}

std::string dependenciesOf(const Target& target) {
    std::vector<std::string> names;
    names.reserve(target.dependencies().size());
    for (const DependencyRecord& record : target.dependencies()) {
        names.push_back(record.kind == DependencyKind::Macro ? "@" + record.macro.toDisplayString()
                                                             : record.reference.toDisplayString());
    }
    return joined(names, " ");
}

/// What stands beside a target's name: its description, else what it needs.
std::string secondColumnOf(const std::shared_ptr<const Target>& target,
                           const ImplicitLayers& implicit) {
    const std::string description = descriptionOf(target, implicit);
    return description.empty() ? dependenciesOf(*target) : description;
}

/// "name(p, q)" for one that others call with arguments.
std::string labelOf(const Target& target) {
    return target.parameters.empty()
               ? target.name
               : fmt::format("{}({})", target.name, joined(target.parameters, ", "));
}

void print(const Unit& unit, const ImplicitLayers& implicit) {
    std::size_t width = 0;
    for (const auto& target : unit.targets) {
        width = std::max(width, labelOf(*target).size());
    }
    for (const auto& target : unit.targets) {
        const std::string column = secondColumnOf(target, implicit);
        if (column.empty()) {
            console::normal("{}", labelOf(*target));
        } else {
            console::writeColumns(console::level::kNormal, console::colour::kNormal,
                                  fmt::format("{:{}}  ", labelOf(*target), width),
                                  {console::colour::kSecondColumn, column});
        }
    }
}

struct UnitPlace {
    const Project* project;
    std::string unit;
};

/// "unit", or "project/unit" with a project that is loaded, by its name or by the alias that it has
/// in the one at hand. Without a unit behind the slash it is the main unit.
UnitPlace placeOf(const std::string& word, const Workspace& workspace) {
    const std::size_t slash = word.find('/');
    if (slash == std::string::npos) {
        return {workspace.project, word};
    }
    const std::string name = word.substr(0, slash);
    std::string unit = word.substr(slash + 1);
    if (const Project* imported = workspace.project->findImport(name)) {
        return {imported, std::move(unit)};
    }
    std::vector<std::string> names;
    for (const Project* project : workspace.store->projects()) {
        if (equalsIgnoringCase(project->name, name)) {
            return {project, std::move(unit)};
        }
        names.push_back(project->name);
    }
    throw NotFoundException("Project", name, didYouMean(name, names));
}

}  // namespace

int listTargets(const Settings& settings) {
    UserRegistry registry;
    Workspace workspace = loadWorkspaceOrUnit(settings, registry);
    const Request request =
        readRequest(settings, workspace, selectProfile(settings, workspace, registry));
    const auto [project, unitName] = placeOf(settings.unitToList, workspace);
    const auto implicit =
        implicitLayers(*project, *builtinVariables(project->root), *request.assignments);
    const auto unit = project->findUnit(unitName);
    if (!unit) {
        throw NotFoundException("Unit", unitName, didYouMean(unitName, project->unitNames()));
    }
    print(*unit, implicit);
    return 0;
}

}  // namespace Vesk::modes
