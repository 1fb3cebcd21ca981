// The modes that list what the project file names.

#include <string>
#include <vector>

#include "app/modes/modes.h"
#include "app/workspace.h"
#include "base/console.h"

namespace Vesk::modes {
namespace {

/// Prints a line for each name that the project has.
int listNames(const Settings& settings, std::vector<std::string> (Project::*names)() const) {
    UserRegistry registry;
    const Workspace workspace = loadWorkspace(settings, registry);
    if (workspace.project == nullptr) {
        console::error("No file to list. You need {}.", kProjectFileName);
        return -1;
    }
    workspace.loader->loadImports(*workspace.project, {});
    for (const std::string& name : (workspace.project->*names)()) {
        console::normal("{}", name);
    }
    return 0;
}

}  // namespace

int listProfiles(const Settings& settings) {
    return listNames(settings, &Project::profileNames);
}

int listUnits(const Settings& settings) {
    return listNames(settings, &Project::unitNames);
}

}  // namespace Vesk::modes
