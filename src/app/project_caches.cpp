#include "app/project_caches.h"

#include "build/cache/memory_cache.h"

namespace Vesk {

BuildCache& ProjectCaches::of(const Project& project) {
    std::unique_ptr<BuildCache>& cache = caches_[&project];
    if (!cache) {
        cache = std::make_unique<MemoryCache>();
    }
    return *cache;
}

void ProjectCaches::save() {
    for (const auto& [project, cache] : caches_) {
        cache->save();
    }
}

}  // namespace Vesk
