// The recipes of a visit that is kept. When only files have changed since, those that are stale run
// as they are, and nobody has to visit the target to have them made once more.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cache/cache_record.h"
#include "cache/tracked_path.h"
#include "run/recipe.h"

namespace Vesk {

class TargetBuild;

/// What the target's record does not tell of its recipes, as bytes. Empty where running them is
/// not all that its builder does, or where a recipe is more than its commands.
std::string encodedRecipes(const TargetBuild& build);

class KeptRecipes {
  public:
    /// `record` is the one that was made when the recipes were encoded, or a later one in which
    /// they are the same. Nothing if it does not go with them.
    static std::optional<KeptRecipes> decoded(std::string_view bytes, const RecordText& record,
                                              const TrackingRoot& root);

    /// As the builder and the driver made them. Of each recipe only `stage`, `role` and `start`
    /// are there until it is completed.
    std::vector<Recipe> recipes;
    CacheRequest request;

    /// `writes`: the files that it makes.
    void complete(Recipe& recipe, std::size_t number, const std::vector<std::string>& writes) const;

    /// Files that others may make and that stand in a compiler's command; see filesMentioned.
    std::vector<std::string> mentioned(std::size_t recipe) const;

    const std::string& outputDirectory() const noexcept { return outputDirectory_; }
    const std::vector<std::string>& directories() const noexcept { return directories_; }

    /// Whether it is a list of commands, which start together, and the files that the target makes
    /// then without a recipe that declares it.
    bool isList() const noexcept { return isList_; }
    const std::vector<std::string>& ownFiles() const noexcept { return ownFiles_; }

  private:
    /// What recipes have in common.
    struct Kind {
        Recipe common;
        std::string directory;  ///< its working directory
    };

    /// Pieces of the bytes.
    struct Single {
        std::size_t kind = 0;
        std::string_view command;
        std::vector<std::string_view> furtherCommands;
        std::string_view dependencyFile;
        std::vector<std::pair<std::string_view, std::string_view>> supportFiles;
        std::vector<std::string_view> mentioned;
        Judged judged = Judged::WithTarget;
        std::size_t reads = 0;   ///< how many it declares
        std::size_t source = 0;  ///< among these, counted from 1; 0: none
    };

    bool takeAll(std::string_view bytes);
    bool makeRequest(const RecordText& record, const TrackingRoot& root);
    CacheRequest::Part partOf(const Single& single) const;

    std::string outputDirectory_;
    std::vector<std::string> directories_;  ///< of the target's outputs
    bool isList_ = false;
    std::vector<std::string> ownFiles_;
    std::size_t reads_ = 0;  ///< how many the target declares as a whole
    std::vector<Kind> kinds_;
    std::vector<Single> singles_;
};

}  // namespace Vesk
