#include "project/create_project.h"

#include "app/modes/modes.h"
#include "app/project_root.h"

namespace Vesk::modes {

int createProject(const Settings& settings) {
    const std::filesystem::path directory = std::filesystem::current_path();
    const ProjectRoot root = findProjectRoot(settings);
    // A project above is another one: what it lists elsewhere is not for the new one.
    const std::filesystem::path& start = root.projectFile ? directory : root.directory;
    createProjectFile(describeNewProject(start, directory), directory);
    return 0;
}

}  // namespace Vesk::modes
