// Asking the cache whether a target must be built.
#pragma once

#include <string>
#include <vector>

#include "build/cache/build_cache.h"
#include "build/run/recipe.h"
#include "tools/builder.h"

namespace Vesk {

/// What a build of the target would consist of: the variables that its builder consumes, the
/// recipes with their commands and directories, and the environment of the commands.
CacheRequest cacheRequest(const TargetContext& target, const Builder& builder,
                          const std::vector<Recipe>& recipes);

/// A target's place in its project's cache, for one visit. A claim that is not recorded is given
/// back when the step goes out of scope.
class CacheStep {
  public:
    /// Asks for the record, to claim it when it does not answer the request, and reports the
    /// answer. Throws VeskException when the cache gives none.
    CacheStep(BuildCache& cache, std::string key, CacheRequest request,
              const std::string& displayName);
    ~CacheStep();
    CacheStep(const CacheStep&) = delete;
    CacheStep& operator=(const CacheStep&) = delete;

    bool mustBuild() const noexcept { return obtained_.answer != CacheAnswer::Hit; }

    /// The outputs of the earlier build; for a hit only.
    std::shared_ptr<Context> storedOutputs() const;

    /// Records a finished build, when there is a claim. Throws VeskException when the cache
    /// refuses.
    void record(const Context& outputs, const std::string& displayName);

  private:
    BuildCache& cache_;
    std::string key_;
    CacheRequest request_;
    ObtainResult obtained_;
};

}  // namespace Vesk
