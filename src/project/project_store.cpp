#include "project/project_store.h"

#include <system_error>

#include "base/exception.h"
#include "grammar/loaders.h"
#include "platform/files.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

std::unique_ptr<Project> projectOf(std::shared_ptr<const Unit> unit, const fs::path& root) {
    auto project = std::make_unique<Project>();
    project->root = root;
    project->name = unit->name;
    project->addUnit(std::move(unit));
    return project;
}

/// Throws `text` and the path; a note says what is there instead, or why the system does not tell.
void requireFile(const fs::path& path, const char* text) {
    if (platform::isFile(path)) {
        return;
    }
    VeskException error(text + platform::pathToUtf8(path));
    std::error_code reason;
    if (platform::isDirectory(path)) {
        error.addNote("it is a directory");
    } else if (!platform::exists(path, reason) && reason) {
        error.addNote(reason.message());
    }
    throw error;
}

}  // namespace

Project& ProjectStore::addProject(std::unique_ptr<Project> project) {
    const std::string path = platform::pathToUtf8(project->file);
    if (path.empty()) {
        throw VeskException("Project path is empty.");
    }
    requireFile(project->file, "Project path is not a file: ");
    if (project->name.empty()) {
        VeskException error("A stored project requires a primary name: " + path);
        error.addNote("give the project file a first line such as: name my_project");
        throw error;
    }
    const auto [place, isNew] = projects_.try_emplace(project->name);
    if (!isNew) {
        throw VeskException("Duplicate project name '" + project->name +
                            "': " + platform::pathToUtf8(place->second->file) + " versus " + path);
    }
    place->second = std::move(project);
    return *place->second;
}

void ProjectStore::requireStandaloneRoot(const fs::path& root) const {
    if (!platform::isDirectory(root)) {
        throw VeskException("Standalone root is not a directory: " + platform::pathToUtf8(root));
    }
    if (standalone_) {
        throw VeskException("A ProjectStore can hold only one standalone unit.");
    }
}

Project& ProjectStore::addStandaloneUnit(const fs::path& unitFile, const fs::path& root,
                                         UnitOutlines* outlines) {
    if (unitFile.empty()) {
        throw VeskException("Standalone unit path is empty.");
    }
    requireFile(unitFile, "Standalone unit path is not a file: ");
    requireStandaloneRoot(root);
    auto unit = std::make_shared<Unit>(parseUnitFile(unitFile, outlines));
    if (unit->name.empty()) {
        unit->name = platform::pathToUtf8(unitFile.stem());
    }
    standalone_ = projectOf(std::move(unit), root);
    return *standalone_;
}

Project& ProjectStore::addPreparedStandaloneUnit(std::shared_ptr<const Unit> unit,
                                                 const fs::path& root) {
    if (!unit || unit->name.empty()) {
        throw VeskException("A prepared standalone unit requires a name.");
    }
    requireStandaloneRoot(root);
    standalone_ = projectOf(std::move(unit), root);
    return *standalone_;
}

std::vector<const Project*> ProjectStore::projects() const {
    std::vector<const Project*> all;
    all.reserve(projects_.size() + 1);
    for (const auto& [name, project] : projects_) {
        all.push_back(project.get());
    }
    if (standalone_) {
        all.push_back(standalone_.get());
    }
    return all;
}

}  // namespace Vesk
