// The caches of a build.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <vector>

#include "cache/file_states.h"
#include "cache/project_cache.h"
#include "platform/files.h"
#include "project/project.h"

namespace Vesk {

/// One cache for each directory with a project that the build may come to; a project that is loaded
/// under two profiles has one cache.
class ProjectCaches {
  public:
    enum class Use {
        build,
        look,  ///< nothing will be written: no lock is taken
    };

    /// Loads the caches of all the projects. While another vesk builds in one of their directories
    /// this waits, and says so. Throws VeskException when that other one waits for this process,
    /// and std::system_error when an interruption ends the waiting.
    ProjectCaches(const std::vector<const Project*>& projects, Use use);

    /// Throws std::out_of_range for a project that was not among them.
    ProjectCache& of(const Project& project) { return *caches_.at(project.root).cache; }

    /// Whether no other vesk can write them.
    bool areLocked() const;

    /// Whether another vesk has built while this one waited for it.
    bool hasWaited() const noexcept { return hasWaited_; }

    /// What has been read of them. A run that is recorded asks about these files when it has
    /// saved the caches: what they were before, it has replaced itself.
    std::vector<std::filesystem::path> ownFiles() const;

    /// Saves all of them; those that cannot be saved have said so.
    void save();

  private:
    void noteMadeDirectories();

    struct Locked {
        std::unique_ptr<platform::FileLock> lock;
        std::unique_ptr<ProjectCache> cache;
    };

    std::unique_ptr<FileStates> states_;              ///< the caches refer to it
    std::map<std::filesystem::path, Locked> caches_;  ///< by directory
    Use use_;
    bool hasWaited_ = false;
};

}  // namespace Vesk
