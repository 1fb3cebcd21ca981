// Where the project is that the run works on.
#pragma once

#include <filesystem>
#include <optional>

#include "app/settings.h"

namespace Vesk {

struct ProjectRoot {
    std::filesystem::path directory;
    std::optional<std::filesystem::path> projectFile;  ///< nothing: there is no project
};

/// With a unit file from -f, its directory; in command-line mode the current directory; else the
/// nearest directory, from the current one up, that holds a project file, and without one that of
/// the unit file, if it exists, or the current one.
ProjectRoot findProjectRoot(const Settings& settings);

/// The root of a run whose directory is known, announced like the others.
ProjectRoot projectRootAt(const std::filesystem::path& directory);

}  // namespace Vesk
