// The projects of a run.
#pragma once

#include <memory>
#include <string>

#include "app/project_root.h"
#include "app/settings.h"
#include "app/user_registry.h"
#include "project/load_project.h"
#include "project/project_store.h"

namespace Vesk {

/// The project that a run works on, and what loads more of them.
struct Workspace {
    ProjectRoot root;
    std::unique_ptr<ProjectStore> store;
    std::unique_ptr<ProjectLoader> loader;
    Project* project = nullptr;
    std::shared_ptr<Target> commandLineTarget;  ///< with -c: the project's only target
};

/// Finds the root and loads the project whose file is there; `project` is null where there is no
/// project file. The registry and the outlines of unit files, which may be null, must outlive the
/// workspace. Throws what loading throws.
Workspace loadWorkspace(const Settings& settings, UserRegistry& registry,
                        UnitOutlines* outlines = nullptr);

/// The same, or else what stands for a project: the target of the command line, a registered
/// project that the command line names, or the unit file. `project` is never null. Throws
/// VeskException where there is nothing to build.
Workspace loadWorkspaceOrUnit(const Settings& settings, UserRegistry& registry,
                              UnitOutlines* outlines = nullptr);

}  // namespace Vesk
