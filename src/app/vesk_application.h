// The application: settings, set-up and run modes.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/compile_commands.h"
#include "app/declared_tools.h"
#include "app/positionals.h"
#include "app/project_caches.h"
#include "app/project_root.h"
#include "app/settings.h"
#include "project/load_project.h"
#include "project/project_catalog.h"
#include "project/project_store.h"
#include "project/registry.h"
#include "tools/toolbox.h"
#include "types/context.h"

namespace Vesk {

/// One run of vesk, from arguments to exit status. What concerns the process as a whole (handlers,
/// the console, errors that end the run) is its caller's.
class VeskApplication {
  public:
    VeskApplication();

    /// Fills the settings; throws as parseCommandLine.
    void parse(const std::vector<std::string>& arguments);

    const Settings& settings() const noexcept { return settings_; }

    /// Runs the mode that the settings name and returns the exit status. Throws what goes wrong.
    int run();

  private:
    int build();
    void runBuild();
    int listProfiles();
    int listUnits();
    int listTargets();
    int registerProject();
    int findCompilers();
    int createProject();
    int printVersion();
    int printHelp();

    // The set-up steps, in the order in which the modes take them.
    void loadRegistry();
    void loadProject();
    void loadUnits();
    void classifyWords();
    void loadImports();
    void takeAssignments();
    void registerTools();
    void createCatalog();
    void loadCaches();

    void addCommandLineUnit();
    void addUnitFile();
    std::string requestedProject() const;
    void addRegisteredProject(const std::string& name);
    ProjectLoader& loader();
    void printImplicitContexts() const;
    std::shared_ptr<Context> buildTarget();

    std::vector<std::string> arguments_;
    Settings settings_;
    std::optional<Registry> registry_;
    ProjectRoot root_;
    ProjectStore store_;  ///< moves into the catalog
    std::optional<ProjectLoader> loader_;
    Project* project_ = nullptr;  ///< what the run works on; null while there is none
    std::shared_ptr<Target> commandLineTarget_;
    Positionals positionals_;
    std::shared_ptr<Context> builtins_;
    std::shared_ptr<Context> commandLine_;
    Toolbox staticTools_;
    std::optional<DeclaredTools> declaredTools_;
    std::optional<ProjectCatalog> catalog_;
    ProjectCaches caches_;
    CompileCommands compileCommands_;
};

}  // namespace Vesk
