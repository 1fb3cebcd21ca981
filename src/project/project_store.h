// The owner of everything that was loaded.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "project/project.h"

namespace Vesk {

class UnitOutlines;

/// The name of the unit, and of its only target, that the command line itself describes.
inline constexpr const char* kCommandLineUnit = "cmdline";

/// The loaded projects, one for each primary name, and at most one standalone unit. Projects keep
/// their addresses even when the store is moved. The store itself checks what it is given.
class ProjectStore {
  public:
    /// Takes a loaded project under its primary name. Throws VeskException: "Project path is
    /// empty.", "Project path is not a file: ...", "A stored project requires a primary name: ...",
    /// "Duplicate project name '...': ... versus ...".
    Project& addProject(std::unique_ptr<Project> project);

    /// Reads the unit file and makes it a project of its own, with `root` as its directory. The
    /// unit's name is its `unit` line's, else made from the file's name. Throws VeskException for
    /// a path that is empty or not a file, a root that is not a directory, and a second standalone
    /// unit; and what parseUnitFile throws. `outlines`: as for parseUnitFile.
    Project& addStandaloneUnit(const std::filesystem::path& unitFile,
                               const std::filesystem::path& root, UnitOutlines* outlines = nullptr);

    /// The same for a unit that has no file behind it. Throws likewise, and for one without a name.
    Project& addPreparedStandaloneUnit(std::shared_ptr<const Unit> unit,
                                       const std::filesystem::path& root);

    /// All projects in name order, the standalone unit last.
    std::vector<const Project*> projects() const;

  private:
    void requireStandaloneRoot(const std::filesystem::path& root) const;

    std::map<std::string, std::unique_ptr<Project>, std::less<>> projects_;
    std::unique_ptr<Project> standalone_;
};

}  // namespace Vesk
