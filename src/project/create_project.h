// A first project file from the unit files that are there.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Vesk {

/// What a new project file will say.
struct NewProject {
    std::string name;
    std::map<std::string, std::vector<std::string>> units;  ///< files relative to it, with slashes
};

/// Describes the unit files under `root` for a project file in `directory`. Names the project after
/// its root and the units after their `unit` lines, else after the directories they lie in (in
/// `root` itself: after the project), such that the result can be loaded. Of two units or targets
/// with one name the first of the walk counts; a file that cannot be listed is left out with a
/// warning that says why.
NewProject describeNewProject(const std::filesystem::path& root,
                              const std::filesystem::path& directory);

/// Writes the project file into `directory`. A project file that is there is kept beside it under
/// another name, and a message says so. Returns the file's path. Throws VeskException when it
/// cannot be written; an old file is then still in place.
std::filesystem::path createProjectFile(const NewProject& project,
                                        const std::filesystem::path& directory);

}  // namespace Vesk
