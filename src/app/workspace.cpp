#include "app/workspace.h"

#include <cstddef>
#include <utility>

#include "base/exception.h"
#include "platform/files.h"
#include "tools/tool_registry.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

void addCommandLineUnit(Workspace& workspace) {
    workspace.commandLineTarget = std::make_shared<Target>();
    workspace.commandLineTarget->name = kCommandLineUnit;
    auto unit = std::make_shared<Unit>();
    unit->name = kCommandLineUnit;
    unit->addTarget(workspace.commandLineTarget);
    workspace.project =
        &workspace.store->addPreparedStandaloneUnit(std::move(unit), workspace.root.directory);
}

/// The registered project whose target the command line names, where nothing else can be built;
/// empty without one.
std::string requestedProject(const Settings& settings, UserRegistry& registry) {
    if (!registry.isOffered() || settings.unitFileSource != UnitFileSource::Default ||
        platform::isFile(settings.unitFile)) {
        return {};
    }
    for (const std::string& word : settings.positionals) {
        const std::size_t slash = word.find('/');
        const std::size_t colons = word.find("::");
        const bool hasProject = slash < colons && colons != std::string::npos;
        if (hasProject && registry.read().projects.contains(word.substr(0, slash))) {
            return word.substr(0, slash);
        }
    }
    return {};
}

void addRegisteredProject(Workspace& workspace, const std::string& name, const Registry& registry) {
    try {
        workspace.project = &workspace.loader->loadRoot(registry.findRegisteredProject(name));
    } catch (...) {
        rethrowWithNote("registered as '" + name + "' in " + platform::pathToUtf8(registry.file));
    }
    workspace.root = projectRootAt(workspace.project->root);
}

void addUnitFile(Workspace& workspace, const Settings& settings, UnitOutlines* outlines) {
    const fs::path file = settings.unitFile.empty() ? fs::path() : fs::absolute(settings.unitFile);
    try {
        workspace.project =
            &workspace.store->addStandaloneUnit(file, workspace.root.directory, outlines);
    } catch (VeskException& error) {
        if (settings.unitFileSource == UnitFileSource::Default && !platform::isFile(file)) {
            error.addNote(std::string("no ") + kProjectFileName + " was found in " +
                          platform::pathToUtf8(workspace.root.directory) + " or above either");
            error.addNote(
                "name a unit file with -f, or make a project of the unit files below the current "
                "directory with --create-project");
        }
        throw;
    }
}

}  // namespace

Workspace loadWorkspace(const Settings& settings, UserRegistry& registry, UnitOutlines* outlines) {
    Workspace workspace;
    workspace.store = std::make_unique<ProjectStore>();
    workspace.loader = std::make_unique<ProjectLoader>(
        *workspace.store, [&registry] { return &registry.read(); }, isKnownToolType, outlines);
    workspace.root = findProjectRoot(settings);
    if (workspace.root.projectFile) {
        workspace.project = &workspace.loader->loadRoot(*workspace.root.projectFile);
    }
    return workspace;
}

Workspace loadWorkspaceOrUnit(const Settings& settings, UserRegistry& registry,
                              UnitOutlines* outlines) {
    Workspace workspace = loadWorkspace(settings, registry, outlines);
    if (workspace.project != nullptr) {
        return workspace;
    }
    if (settings.commandLineMode) {
        addCommandLineUnit(workspace);
    } else if (const std::string name = requestedProject(settings, registry); !name.empty()) {
        addRegisteredProject(workspace, name, registry.read());
    } else {
        addUnitFile(workspace, settings, outlines);
    }
    return workspace;
}

}  // namespace Vesk
