// Removing what builds have made.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cache/project_cache.h"

namespace Vesk {

struct CleanOptions {
    /// Whether this is to go, which the target of the entry's key has made.
    std::function<bool(const MadeFiles::Entry&)> concerns;

    bool force = false;   ///< what was changed goes too
    bool dryRun = false;  ///< nothing goes
};

/// Paths are as users see them: below the project's directory without it.
struct CleanReport {
    struct Left {
        std::string path;
        std::string why;  ///< "it has changed since vesk made it"
    };

    std::vector<std::string> files;  ///< that are gone, or would be
    std::vector<std::string> directories;
    std::vector<Left> left;
};

/// Removes files that builds of the cache's project have made and that are as they were made, then
/// the directories that builds have made and that are empty now. Records of targets of which
/// nothing is left are dropped; `save` is the caller's.
CleanReport clean(ProjectCache& cache, const CleanOptions& options);

}  // namespace Vesk
