#include "app/completion_projects.h"

#include <algorithm>
#include <optional>
#include <system_error>
#include <utility>

#include "app/project_root.h"
#include "base/attempt.h"
#include "base/ci_string.h"
#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/project.h"
#include "project/user_data.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

ProjectAtHand projectIn(const fs::path& directoryOrFile) {
    ProjectAtHand project;
    const bool isDirectory = platform::isDirectory(directoryOrFile);
    project.root = isDirectory ? directoryOrFile : directoryOrFile.parent_path();
    // Where it is broken, or not there, nothing in it can be named.
    succeeds([&] {
        project.file =
            parseProjectFile(isDirectory ? directoryOrFile / kProjectFileName : directoryOrFile);
    });
    return project;
}

ProjectAtHand unitAlone(const fs::path& file) {
    ProjectAtHand project;
    project.root = file.parent_path();
    project.file.units.push_back({{}, {platform::pathToUtf8(file)}, 0});
    return project;
}

fs::path placeOf(const ProjectImport& import, const ProjectAtHand& from) {
    return (from.root / platform::pathFromUtf8(import.location)).lexically_normal();
}

std::string nameOf(const ProjectImport& import, const ProjectAtHand& from) {
    if (!import.alias.empty() || !import.byPath) {
        return import.alias.empty() ? import.location : import.alias;
    }
    return projectIn(placeOf(import, from)).file.name;
}

std::optional<ProjectAtHand> registered(const std::string& name, const Registry& registry) {
    if (!registry.projects.contains(name)) {
        return std::nullopt;
    }
    return projectIn(registry.findRegisteredProject(name));
}

}  // namespace

std::vector<OutlinedTarget> ProjectAtHand::targets(std::string_view unit) const {
    std::vector<OutlinedTarget> found;
    const bool isMain = unit.empty() || unit == kMainUnitAlias;
    const auto entry = std::ranges::find_if(
        file.units, [&](const UnitEntry& each) { return isMain || each.name == unit; });
    if (entry == file.units.end()) {
        return found;
    }
    for (const std::string& name : entry->files) {
        std::error_code ignored;
        const auto text =
            platform::readWholeFile(root / platform::pathFromUtf8(name), ignored, kMaxFileBytes);
        std::ranges::move(targetOutline(text.value_or("")), std::back_inserter(found));
    }
    std::erase_if(found, &OutlinedTarget::hasParameters);
    return found;
}

ProjectAtHand projectAtHand(const Settings& settings) {
    if (settings.commandLineMode) {
        return {};
    }
    ProjectAtHand project;
    succeeds([&] {
        const ProjectRoot root = findProjectRoot(settings);
        project = root.projectFile ? projectIn(*root.projectFile)
                                   : unitAlone(fs::absolute(settings.unitFile));
    });
    return project;
}

Registry registryAtHand() {
    Registry registry;
    succeeds([&] { registry = loadRegistry(userDataPath() / kRegistryFileName); });
    return registry;
}

ProjectAtHand projectCalled(std::string_view name, const ProjectAtHand& from,
                            const Registry& registry) {
    if (equalsIgnoringCase(name, from.file.name)) {
        return from;
    }
    for (const ProjectImport& import : from.file.imports) {
        if (!equalsIgnoringCase(name, nameOf(import, from))) {
            continue;
        }
        return import.byPath ? projectIn(placeOf(import, from))
                             : registered(import.location, registry).value_or(ProjectAtHand());
    }
    return registered(std::string(name), registry).value_or(ProjectAtHand());
}

std::vector<ProjectName> projectNames(const ProjectAtHand& from, const Registry& registry) {
    std::vector<ProjectName> names;
    for (const ProjectImport& import : from.file.imports) {
        names.push_back({nameOf(import, from), "an imported project"});
    }
    for (const auto& entry : registry.projects) {
        const bool isKnown = std::ranges::any_of(names, [&](const ProjectName& known) {
            return equalsIgnoringCase(known.name, entry.first);
        });
        if (!isKnown) {
            names.push_back(
                {entry.first, "a registered project, " + platform::pathToUtf8(entry.second)});
        }
    }
    std::erase_if(names, [](const ProjectName& each) { return each.name.empty(); });
    return names;
}

}  // namespace Vesk
