#include "app/project_root.h"

#include "base/console.h"
#include "platform/files.h"
#include "project/load_project.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

ProjectRoot searchUpwards(const Settings& settings) {
    const fs::path start = fs::current_path();
    if (auto file = findProjectFile(start)) {
        console::trace("Found a project file at {}", platform::pathToUtf8(file->parent_path()));
        return {file->parent_path(), std::move(file)};
    }
    console::trace("No project file.");
    const fs::path unitFile = fs::absolute(settings.unitFile);
    std::error_code ignored;
    return {platform::exists(unitFile, ignored) ? unitFile.parent_path() : start, std::nullopt};
}

ProjectRoot chosenRoot(const Settings& settings) {
    switch (settings.unitFileSource) {
        case UnitFileSource::Given:
            return {settings.unitFile.parent_path(), std::nullopt};
        case UnitFileSource::CommandLine:
            return {fs::current_path(), std::nullopt};
        case UnitFileSource::Default:
            break;
    }
    return searchUpwards(settings);
}

ProjectRoot announced(ProjectRoot root) {
    console::trace("Setting project root to {}", platform::pathToUtf8(root.directory));
    return root;
}

}  // namespace

ProjectRoot findProjectRoot(const Settings& settings) {
    return announced(chosenRoot(settings));
}

ProjectRoot projectRootAt(const fs::path& directory) {
    return announced({directory, std::nullopt});
}

}  // namespace Vesk
