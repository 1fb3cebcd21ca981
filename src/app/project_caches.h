// The caches of a build.
#pragma once

#include <memory>
#include <unordered_map>

#include "build/cache/build_cache.h"
#include "project/project.h"

namespace Vesk {

/// One cache for each project that the build comes to.
class ProjectCaches {
  public:
    /// The project's cache, made when it is first asked for.
    BuildCache& of(const Project& project);

    /// Saves all of them; those that cannot be saved have said so.
    void save();

  private:
    std::unordered_map<const Project*, std::unique_ptr<BuildCache>> caches_;
};

}  // namespace Vesk
