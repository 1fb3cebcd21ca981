// Loading a project and what it imports.
//
// It takes two steps, because the profile that is asked for can only be told from a target's name
// once the targets are known: the project's own files first, then, under the profile, its imports.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "project/project.h"
#include "project/project_store.h"

namespace Vesk {

class Registry;
class UnitOutlines;

/// Whether a tool can be made of that tool type; asked for each tool that a project declares.
using ToolTypePredicate = std::function<bool(std::string_view)>;

/// Gives the registry, reading it if need be; asked only when a registered name must be looked up.
/// Null, or nothing to call, where there is none.
using RegistrySource = std::function<const Registry*()>;

/// The project file in `directory` or the nearest directory above it; nothing without one.
std::optional<std::filesystem::path> findProjectFile(const std::filesystem::path& directory);

/// Loads projects into a store, each project file once.
class ProjectLoader {
  public:
    /// Store, registry and outlines, which may be null, must outlive the loader.
    ProjectLoader(ProjectStore& store, RegistrySource registry, ToolTypePredicate knowsToolType,
                  UnitOutlines* outlines = nullptr);

    /// Reads a project file and the project's own units. Throws VeskException for what the file or
    /// a unit has wrong, with the file's path, and what parsing and the store throw.
    Project& loadRoot(const std::filesystem::path& projectFile);

    /// Selects the profile (empty: none) and loads the imports that apply under it, theirs under
    /// the profiles that the imports name, and so on. Throws VeskException for an unknown profile,
    /// a cycle, a project wanted under two profiles, an alias given twice; NotFoundException for
    /// a name that is not registered; and as loadRoot.
    void loadImports(Project& root, const std::string& profile);

    /// Makes a project known that the command line names and `root` does not import: the registered
    /// one of that name, loaded without a profile. Throws as loadImports. Does nothing when `root`
    /// knows the name or it is not registered.
    void loadRequested(Project& root, const std::string& name);

  private:
    struct Frame;

    struct Loaded {
        Project* project = nullptr;
        std::string origin;  ///< who asked for it first, for messages
    };

    Project& readProject(const std::filesystem::path& projectFile, const std::string& profile);
    std::vector<ToolEntry> usableTools(const ProjectFile& file) const;
    void selectProfile(Project& project, const std::string& profile) const;
    void loadImportTree(Project& start);
    Project* enterImport(const std::vector<Frame>& chain, const ProjectImport& entry);
    void requireReusable(const std::vector<Frame>& chain, const Loaded& loaded,
                         const std::string& profile) const;
    [[noreturn]] void throwCycle(const std::vector<Frame>& chain, const Project& again) const;
    void addImport(Project& importer, const ProjectImport& entry, const Project& imported) const;
    std::filesystem::path locateImport(const Project& importer, const ProjectImport& entry) const;

    ProjectStore& store_;
    RegistrySource registry_;
    ToolTypePredicate knowsToolType_;
    UnitOutlines* outlines_;
    std::unordered_map<std::string, Loaded> loaded_;  ///< by identity of the project file
    std::unordered_set<const Project*> inProgress_;   ///< those on the chain of imports
};

}  // namespace Vesk
