#include "project/load_project.h"

#include "base/ci_string.h"
#include "base/console.h"
#include "base/text.h"
#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/load_units.h"
#include "project/project_paths.h"
#include "project/registry.h"
#include "project/tool_entry.h"
#include "types/values/errors.h"

namespace Vesk {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void throwUnknownProfile(const Project& project, const std::string& profile) {
    VeskException error("Profile '" + profile + "' not found in " +
                        platform::pathToUtf8(project.file));
    std::string suggestion = didYouMean(profile, project.profileNames());
    if (!suggestion.empty()) {
        error.addNote(std::move(suggestion));
    } else if (!project.profiles.empty()) {
        error.addNote("its profiles are: " + joined(project.profileNames(), ", "));
    }
    throw error;
}

void requireProfile(const Project& project, const std::string& profile) {
    if (!profile.empty() && project.findProfile(profile) == nullptr) {
        throwUnknownProfile(project, profile);
    }
}

void requireDistinctProfiles(const ProjectFile& file) {
    std::unordered_map<std::string_view, std::uint32_t, CiHash, CiEqual> lines;
    for (const ProfileEntry& entry : file.profiles) {
        const auto [first, isNew] = lines.emplace(entry.name, entry.line);
        if (!isNew) {
            throw VeskException("Duplicate profile '" + entry.name + "' in " +
                                placeOf(file.path, entry.line) + ": the first is in line " +
                                std::to_string(first->second) + ".");
        }
    }
}

std::string importNote(const Project& importer, std::uint32_t line) {
    return "imported by project '" + importer.name + "' in " + placeOf(importer.file, line);
}

}  // namespace

/// A project whose imports are being loaded.
struct ProjectLoader::Frame {
    Project* project;
    std::size_t next = 0;  ///< the import to look at next
};

std::optional<fs::path> findProjectFile(const fs::path& directory) {
    for (fs::path current = directory;; current = current.parent_path()) {
        fs::path file = current / kProjectFileName;
        if (platform::isFile(file)) {
            return file;
        }
        if (!current.has_relative_path()) {
            return std::nullopt;
        }
    }
}

ProjectLoader::ProjectLoader(ProjectStore& store, RegistrySource registry,
                             ToolTypePredicate knowsToolType, UnitOutlines* outlines)
    : store_(store),
      registry_(std::move(registry)),
      knowsToolType_(std::move(knowsToolType)),
      outlines_(outlines) {}

Project& ProjectLoader::loadRoot(const fs::path& projectFile) {
    Project& root = readProject(projectFileAt(projectFile), {});
    loaded_.emplace(fileIdentity(root.file), Loaded{&root, "asked for by the command line"});
    return root;
}

Project& ProjectLoader::readProject(const fs::path& projectFile, const std::string& profile) {
    console::trace("Loading project file {}\n", platform::pathToUtf8(projectFile));
    ProjectFile file = parseProjectFile(projectFile);
    requireDistinctProfiles(file);

    auto made = std::make_unique<Project>();
    made->file = file.path;
    made->hash = file.hash;
    made->root = file.path.parent_path();
    made->name = file.name;
    made->profiles = std::move(file.profiles);
    selectProfile(*made, profile);
    Project& project = store_.addProject(std::move(made));
    project.declaredImports = std::move(file.imports);
    project.tools = usableTools(file);
    loadUnits(project, file, outlines_);
    return project;
}

std::vector<ToolEntry> ProjectLoader::usableTools(const ProjectFile& file) const {
    std::vector<ToolEntry> usable;
    std::unordered_map<std::string_view, bool, CiHash, CiEqual> names;
    for (const ToolEntry& entry : file.tools) {
        try {
            const std::string type = toolTypeOf(entry);
            if (!knowsToolType_(type)) {
                console::warning("Project '{}' tool '{}' has unknown tool_type '{}'. Skipping.\n",
                                 file.name, entry.name, type);
                continue;
            }
        } catch (VeskException& error) {
            error.addNote("in " + placeOf(file.path, entry.line));
            throw;
        }
        if (!names.emplace(entry.name, true).second) {
            console::warning("Duplicate tool '{}' in project '{}'.\n", entry.name, file.name);
            continue;
        }
        usable.push_back(entry);
    }
    return usable;
}

void ProjectLoader::selectProfile(Project& project, const std::string& profile) const {
    requireProfile(project, profile);
    project.profile = profile.empty() ? std::string() : project.findProfile(profile)->name;
}

void ProjectLoader::loadImports(Project& root, const std::string& profile) {
    selectProfile(root, profile);
    loadImportTree(root);
}

// Depth first with a stack of its own: a long chain of imports must not end the process's stack.
void ProjectLoader::loadImportTree(Project& start) {
    std::vector<Frame> chain{{&start}};
    while (!chain.empty()) {
        Frame& frame = chain.back();
        if (frame.next == frame.project->declaredImports.size()) {
            inProgress_.erase(frame.project);
            chain.pop_back();
            continue;
        }
        inProgress_.insert(frame.project);
        const ProjectImport& entry = frame.project->declaredImports[frame.next++];
        if (Project* entered = enterImport(chain, entry)) {
            chain.push_back({entered});
        }
    }
}

/// Resolves one import of the project at the end of the chain. Returns the imported project when
/// its own imports are still to be loaded, else null.
Project* ProjectLoader::enterImport(const std::vector<Frame>& chain, const ProjectImport& entry) {
    Project& importer = *chain.back().project;
    try {
        requireProfile(importer, entry.sourceProfile);
    } catch (VeskException& error) {
        error.addNote("named by an import in " + placeOf(importer.file, entry.line));
        throw;
    }
    if (!entry.sourceProfile.empty() &&
        !equalsIgnoringCase(entry.sourceProfile, importer.profile)) {
        return nullptr;
    }
    const std::string note = importNote(importer, entry.line);
    try {
        const fs::path file = projectFileAt(locateImport(importer, entry));
        const std::string identity = fileIdentity(file);
        if (const auto found = loaded_.find(identity); found != loaded_.end()) {
            requireReusable(chain, found->second, entry.importedProfile);
            addImport(importer, entry, *found->second.project);
            return nullptr;
        }
        Project& imported = readProject(file, entry.importedProfile);
        loaded_.emplace(identity, Loaded{&imported, note});
        addImport(importer, entry, imported);
        return &imported;
    } catch (...) {
        rethrowWithNote(note);
    }
}

void ProjectLoader::requireReusable(const std::vector<Frame>& chain, const Loaded& loaded,
                                    const std::string& profile) const {
    if (inProgress_.contains(loaded.project)) {
        throwCycle(chain, *loaded.project);
    }
    if (equalsIgnoringCase(loaded.project->profile, profile)) {
        return;
    }
    Project requested;
    requested.file = loaded.project->file;
    requested.name = loaded.project->name;
    requested.profile = profile;
    VeskException error("Conflicting project profiles: " + loaded.project->description() +
                        " versus " + requested.description());
    error.addNote("the first is " + loaded.origin);
    error.addNote("a build loads a project once; name one profile in all its imports");
    throw error;
}

void ProjectLoader::throwCycle(const std::vector<Frame>& chain, const Project& again) const {
    std::vector<std::string> names;
    for (const Frame& frame : chain) {
        names.push_back(frame.project->name);
    }
    names.push_back(again.name);
    throw VeskException("Import cycle: " + joined(names, " -> "));
}

void ProjectLoader::addImport(Project& importer, const ProjectImport& entry,
                              const Project& imported) const {
    std::string alias = entry.alias;
    if (alias.empty()) {
        alias = entry.byPath ? imported.name : entry.location;
    }
    if (!importer.addImport(alias, imported)) {
        throw VeskException("Duplicate active import alias '" + alias + "' in " +
                            platform::pathToUtf8(importer.file));
    }
}

fs::path ProjectLoader::locateImport(const Project& importer, const ProjectImport& entry) const {
    if (entry.byPath) {
        return pathWrittenIn(importer.root, entry.location);
    }
    const Registry* const registry = registry_ ? registry_() : nullptr;
    if (registry == nullptr) {
        throw NotFoundException("Registry project", entry.location);
    }
    return registry->findRegisteredProject(entry.location);
}

void ProjectLoader::loadRequested(Project& root, const std::string& name) {
    if (root.findImport(name) != nullptr) {
        return;
    }
    const Registry* const registry = registry_ ? registry_() : nullptr;
    if (registry == nullptr || !registry->projects.contains(name)) {
        return;
    }
    const fs::path file = projectFileAt(registry->findRegisteredProject(name));
    const std::string note =
        "registered as '" + name + "' in " + platform::pathToUtf8(registry->file);
    try {
        const std::string identity = fileIdentity(file);
        const auto found = loaded_.find(identity);
        Project& requested =
            found == loaded_.end() ? readProject(file, {}) : *found->second.project;
        if (found == loaded_.end()) {
            loaded_.emplace(identity, Loaded{&requested, note});
            loadImportTree(requested);
        }
        root.addImport(name, requested);
    } catch (...) {
        rethrowWithNote(note);
    }
}

}  // namespace Vesk
