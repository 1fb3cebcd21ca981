#include "app/modes/modes.h"
#include "app/session.h"
#include "driver/builtin_variables.h"
#include "platform/files.h"
#include "types/values/errors.h"

namespace Vesk::modes {

int registerProject(const Settings& settings) {
    UserRegistry registry;
    const std::filesystem::path file = registry.read().file;
    Workspace workspace = loadWorkspace(settings, registry);
    if (workspace.project == nullptr) {
        throw NotFoundException("project", kProjectFileName,
                                "it was looked for in " +
                                    platform::pathToUtf8(workspace.root.directory) +
                                    " and above; vesk --create-project makes one");
    }
    const Request request =
        readRequest(settings, workspace, selectProfile(settings, workspace, registry));
    // What is registered can be built: the catalog finds what is wrong with it.
    const ProjectCatalog catalog = makeCatalog(workspace, Context(), request);
    updateRegistry(file, [&workspace](Registry& current) {
        current.registerProject(workspace.project->name, workspace.project->root);
    });
    return 0;
}

}  // namespace Vesk::modes
