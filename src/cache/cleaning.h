// Removing what builds have made.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cache/project_cache.h"

namespace Vesk {

struct CleanOptions {
    /// Whether an entry, made by the target of its key, is to be removed.
    std::function<bool(const MadeFiles::Entry&)> concerns;

    bool force = false;   ///< also remove files that have changed since
    bool dryRun = false;  ///< remove nothing
};

/// Paths are shown as users know them: relative to the project's directory if they lie below it.
struct CleanReport {
    struct Left {
        std::string path;
        std::string why;  ///< "it has changed since vesk made it"
    };

    std::vector<std::string> files;  ///< removed, or to be removed
    std::vector<std::string> directories;
    std::vector<Left> left;
};

/// Removes files that the project's builds have made and that are unchanged since, then directories
/// that builds have made and that are empty now. Drops the records of targets of which nothing is
/// left. The caller must call `save`.
CleanReport clean(ProjectCache& cache, const CleanOptions& options);

}  // namespace Vesk
