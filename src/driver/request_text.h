// What decides whether a target must be built, as the text that the cache keeps and compares.
#pragma once

#include <string>
#include <vector>

#include "cache/tracked_path.h"
#include "driver/hidden_values.h"
#include "run/recipe.h"
#include "types/context/context.h"

namespace Vesk {

/// A dependency as its dependant remembers it.
struct DependencyStamp {
    std::string name;   ///< unit::target
    std::string stamp;  ///< new whenever it was built, where no output file tells what it made
};

/// Writes the parts of one request. Paths below the root stand as seen from there, so that a
/// project may move; a text that shows a hidden value stands as its hash.
class RequestText {
  public:
    /// The root outlives it.
    RequestText(const TrackingRoot& root, HiddenValues hidden);

    /// A recipe's commands, where and in what environment they run, the files that are written for
    /// them, and the inputs that it declares.
    std::string recipe(const Recipe& recipe);

    std::string variables(const std::vector<Assignment>& variables) const;

    /// What concerns a target as a whole.
    std::string target(const std::vector<DependencyStamp>& dependencies,
                       const std::vector<std::string>& reads,
                       const std::vector<std::string>& writes) const;

    /// What the toolchain declares about itself, and the target's environment. Values of the latter
    /// stand as hashes.
    std::string environment(const Context& target) const;

  private:
    Assignment comparable(const Assignment& assignment) const;
    std::string directory(const std::filesystem::path& directory) const;
    std::string lines(const std::vector<std::string>& files) const;
    const std::string& hashOf(const ToolEnvironment& environment);

    const TrackingRoot& root_;
    HiddenValues hidden_;
    const ToolEnvironment* hashed_ = nullptr;  ///< mostly that of all recipes of a target
    std::string hash_;                         ///< of its variables
};

}  // namespace Vesk
