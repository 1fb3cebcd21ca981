// The steps by which the modes prepare their work.

#include <utility>

#include "app/vesk_application.h"
#include "base/console.h"
#include "base/exception.h"
#include "platform/files.h"
#include "tools/static/static_tools.h"
#include "tools/tool_registry.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

/// For the target that the command line describes: what is appended is among its own assignments
/// and must not reach it a second time.
std::shared_ptr<Context> withoutAppends(const Context& context) {
    auto assigned = std::make_shared<Context>();
    for (const auto& [name, assignment] : context.assignments()) {
        if (assignment.op != AssignOperator::Append && assignment.written.empty()) {
            assigned->addAssignment(deepCopy(assignment), ModifierMode::Copy);
        }
    }
    return assigned;
}

}  // namespace

void VeskApplication::loadRegistry() {
    registry_ = Vesk::loadRegistry(userDataDirectory() / kRegistryFileName);
}

ProjectLoader& VeskApplication::loader() {
    if (!loader_) {
        const auto registry = [this] {
            if (!registry_) {
                loadRegistry();
            }
            return &*registry_;
        };
        loader_.emplace(store_, registry, isKnownToolType);
    }
    return *loader_;
}

void VeskApplication::loadProject() {
    root_ = findProjectRoot(settings_);
    if (root_.projectFile) {
        project_ = &loader().loadRoot(*root_.projectFile);
    }
}

/// Without a project: the unit that stands for one.
void VeskApplication::loadUnits() {
    if (project_ != nullptr) {
        return;
    }
    if (settings_.commandLineMode) {
        addCommandLineUnit();
    } else if (const std::string name = requestedProject(); !name.empty()) {
        addRegisteredProject(name);
    } else {
        addUnitFile();
    }
}

/// The registered project whose target the command line names where there is nothing else to
/// build; empty without one.
std::string VeskApplication::requestedProject() const {
    if (!registry_ || settings_.unitFileSource != UnitFileSource::Default ||
        platform::isFile(settings_.unitFile)) {
        return {};
    }
    for (const std::string& word : settings_.positionals) {
        const std::size_t slash = word.find('/');
        const std::size_t colons = word.find("::");
        const bool hasProject = slash < colons && colons != std::string::npos;
        if (hasProject && registry_->projects.contains(word.substr(0, slash))) {
            return word.substr(0, slash);
        }
    }
    return {};
}

void VeskApplication::addRegisteredProject(const std::string& name) {
    try {
        project_ = &loader().loadRoot(registry_->findRegisteredProject(name));
    } catch (...) {
        rethrowWithNote("registered as '" + name + "' in " + platform::pathToUtf8(registry_->file));
    }
    root_ = projectRootAt(project_->root);
}

void VeskApplication::addCommandLineUnit() {
    commandLineTarget_ = std::make_shared<Target>();
    commandLineTarget_->name = kCommandLineUnit;
    auto unit = std::make_shared<Unit>();
    unit->name = kCommandLineUnit;
    unit->addTarget(commandLineTarget_);
    project_ = &store_.addPreparedStandaloneUnit(std::move(unit), root_.directory);
}

void VeskApplication::addUnitFile() {
    const fs::path file =
        settings_.unitFile.empty() ? fs::path() : fs::absolute(settings_.unitFile);
    try {
        project_ = &store_.addStandaloneUnit(file, root_.directory);
    } catch (VeskException& error) {
        if (settings_.unitFileSource == UnitFileSource::Default && !platform::isFile(file)) {
            error.addNote(std::string("no ") + kProjectFileName + " was found in " +
                          platform::pathToUtf8(root_.directory) + " or above either");
            error.addNote(
                "name a unit file with -f, or make a project of the unit files below the current "
                "directory with --create-project");
        }
        throw;
    }
}

void VeskApplication::classifyWords() {
    positionals_ = classifyPositionals(settings_.positionals, *project_);
}

void VeskApplication::loadImports() {
    if (!project_->standalone()) {
        loader().loadImports(*project_, positionals_.profile);
    }
    if (registry_ && positionals_.target && !positionals_.target->ns.empty()) {
        loader().loadRequested(*project_, positionals_.target->ns);
    }
}

void VeskApplication::takeAssignments() {
    ContextTemplate written;
    for (const auto& [word, isTarget] : positionals_.others) {
        if (isTarget) {
            console::error("Only one target name can be specified");
            continue;
        }
        written.assignments.push_back(parsePositionalAssignment(word, *project_));
        try {
            fill(*commandLine_, written.assignments.back());
        } catch (...) {
            rethrowWithNote("in '" + word + "' on the command line");
        }
    }
    if (commandLineTarget_) {
        commandLineTarget_->setBody(std::move(written));
    }
}

void VeskApplication::registerTools() {
    staticTools_ = Toolbox();
    createStaticTools(staticTools_);
    declaredTools_.emplace(*registry_, store_.projects(), [this](const Project& project) {
        return implicitLayers(project, *builtins_, *commandLine_);
    });
}

void VeskApplication::createCatalog() {
    const auto overrides = commandLineTarget_ ? withoutAppends(*commandLine_) : commandLine_;
    catalog_.emplace(std::move(store_), *builtins_, *overrides);
    catalog_->setActive(*project_);
}

void VeskApplication::loadCaches() {
    caches_.load(catalog_->projects(),
                 settings_.dryRun ? ProjectCaches::Use::look : ProjectCaches::Use::build);
}

}  // namespace Vesk
