// A first project file from the unit files that are there.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// What a new project file will say.
struct NewProject {
    std::string name;
    std::map<std::string, std::vector<std::string>> units;  ///< files relative, with slashes
};

/// The unit files under `root`, in a stable order. Directory links are followed unless they lead
/// back to where the walk is or has been; a directory directly under `root` of the name
/// `outputDirectory` is left out. Throws std::filesystem::filesystem_error.
std::vector<std::filesystem::path> findUnitFiles(const std::filesystem::path& root,
                                                 std::string_view outputDirectory);

/// Names the project after its directory and the units after their `unit` lines, else after the
/// directories they lie in (in `root` itself: after the project), such that the result can be
/// loaded. A file that cannot be listed is left out with a warning that says why.
NewProject describeNewProject(const std::filesystem::path& root, std::string_view outputDirectory);

/// Writes the project file into `directory`. A project file that is there is kept beside it under
/// another name, and a message says so. Returns the file's path. Throws VeskException when it
/// cannot be written; an old file is then still in place.
std::filesystem::path createProjectFile(const NewProject& project,
                                        const std::filesystem::path& directory);

}  // namespace Vesk
