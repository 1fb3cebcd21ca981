// The run modes.

#include "app/vesk_application.h"

#include <array>
#include <cstddef>

#include "app/builtin_variables.h"
#include "app/command_line.h"
#include "app/listing.h"
#include "app/output_file.h"
#include "app/snapshot.h"
#include "base/console.h"
#include "driver/driver.h"
#include "platform/files.h"
#include "project/create_project.h"
#include "tools/toolchain_detection.h"
#include "types/errors.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSourceUnit = "vesk_app";

/// What the list modes answer where there is nothing to list.
int reportNoProject() {
    console::error("No file to list. You need {}.", kProjectFileName);
    return -1;
}

}  // namespace

VeskApplication::VeskApplication()
    : builtins_(std::make_shared<Context>()), commandLine_(std::make_shared<Context>()) {}

void VeskApplication::parse(const std::vector<std::string>& arguments) {
    arguments_ = arguments;
    parseCommandLine(arguments, settings_);
}

int VeskApplication::run() {
    // In the order of RunMode's numbers.
    static constexpr std::array kModes = {
        &VeskApplication::build,           &VeskApplication::listProfiles,
        &VeskApplication::listUnits,       &VeskApplication::listTargets,
        &VeskApplication::registerProject, &VeskApplication::findCompilers,
        &VeskApplication::createProject,   &VeskApplication::printVersion,
        &VeskApplication::printHelp,
    };
    const auto number = static_cast<std::size_t>(settings_.runMode);
    if (number >= kModes.size()) {
        throw InternalError(kSourceUnit, __LINE__, __func__);
    }
    return (this->*kModes.at(number))();
}

int VeskApplication::build() {
    // A run with more messages than usual is done, not repeated; a dry run writes nothing.
    if (console::threshold() < console::level::kNormal || settings_.dryRun) {
        runBuild();
        return 0;
    }
    Snapshot snapshot(findProjectRoot(settings_).directory, arguments_);
    if (snapshot.repeats()) {
        return 0;
    }
    snapshot.begin();
    runBuild();
    snapshot.keep();
    return 0;
}

void VeskApplication::runBuild() {
    loadRegistry();
    loadProject();
    loadUnits();
    classifyWords();
    loadImports();
    takeAssignments();
    addBuiltinVariables(*builtins_, root_.directory);
    registerTools();
    createCatalog();
    loadCaches();
    console::normal("Starting build");
    if (settings_.dump) {
        printImplicitContexts();
    }
    try {
        const std::shared_ptr<Context> outputs = buildTarget();
        if (!settings_.dryRun) {
            writeOutputFile(settings_.mainOutput, *outputs);
        }
    } catch (...) {
        caches_.save();  // what was built before the failure is not built again
        throw;
    }
    caches_.save();
}

std::shared_ptr<Context> VeskApplication::buildTarget() {
    const TargetLocation target =
        catalog_->locate(positionals_.target.value_or(DependencyReference{}));
    HiddenValues hidden;
    hidden.add(*commandLine_);
    const bool collects = !settings_.compileCommands.empty();
    Driver driver({
        *catalog_,
        staticTools_,
        [this](const Project& project) -> const Toolbox& { return declaredTools_->of(project); },
        [this](const Project& project) -> ProjectCache& { return caches_.of(project); },
        {static_cast<int>(settings_.jobCount), settings_.rebuild, settings_.dryRun,
         settings_.keepGoing, hidden, settings_.maxCommands},
        collects ? [this](const std::vector<Recipe>& recipes) { compileCommands_.add(recipes); }
                 : std::function<void(const std::vector<Recipe>&)>(),
    });
    const std::shared_ptr<Context> outputs = driver.build(target);
    if (collects) {
        compileCommands_.write(settings_.compileCommands);
    }
    return outputs;
}

void VeskApplication::printImplicitContexts() const {
    for (const Project* project : catalog_->projects()) {
        console::normal("Implicit context for project '{}':", project->name);
        catalog_->implicitContext(*project)->print(console::level::kNormal);
    }
}

int VeskApplication::listProfiles() {
    loadProject();
    if (project_ == nullptr) {
        return reportNoProject();
    }
    loadImports();
    Vesk::listProfiles(*project_);
    return 0;
}

int VeskApplication::listUnits() {
    loadProject();
    if (project_ == nullptr) {
        return reportNoProject();
    }
    loadImports();
    Vesk::listUnits(*project_);
    return 0;
}

int VeskApplication::listTargets() {
    loadProject();
    loadUnits();
    classifyWords();
    loadImports();
    takeAssignments();
    addBuiltinVariables(*builtins_, root_.directory);
    Vesk::listTargets(*project_, settings_.unitToList,
                      implicitLayers(*project_, *builtins_, *commandLine_));
    return 0;
}

int VeskApplication::registerProject() {
    loadRegistry();
    loadProject();
    if (project_ == nullptr) {
        throw NotFoundException("project", kProjectFileName,
                                "it was looked for in " + platform::pathToUtf8(root_.directory) +
                                    " and above; vesk --create-project makes one");
    }
    loadUnits();
    classifyWords();
    loadImports();
    takeAssignments();
    createCatalog();
    updateRegistry(registry_->file, [this](Registry& registry) {
        registry.registerProject(project_->name, project_->root);
    });
    return 0;
}

int VeskApplication::findCompilers() {
    loadRegistry();
    const std::vector<DetectedTool> found = detectToolchains();
    if (found.empty()) {
        console::warning("No toolchain of a known type was found.");
    }
    updateRegistry(registry_->file, [&found](Registry& registry) {
        for (const DetectedTool& tool : found) {
            registry.registerTool(tool.name, tool.context);
        }
    });
    for (const DetectedTool& tool : found) {
        console::normal("Registered toolchain '{}'.", tool.name);
    }
    return 0;
}

int VeskApplication::createProject() {
    const fs::path directory = fs::current_path();
    const ProjectRoot root = findProjectRoot(settings_);
    // A project above is another one: what it lists elsewhere is not for the new one.
    const fs::path& start = root.projectFile ? directory : root.directory;
    createProjectFile(describeNewProject(start, directory), directory);
    return 0;
}

int VeskApplication::printVersion() {
    console::normal("{}", VESK_VERSION);
    return 0;
}

int VeskApplication::printHelp() {
    console::normal("{}", kHelpText);
    return 0;
}

}  // namespace Vesk
