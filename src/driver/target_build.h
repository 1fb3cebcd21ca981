// Building one target whose context is complete.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "driver/build_setting.h"
#include "driver/cache_request.h"
#include "driver/cache_step.h"
#include "driver/jobs.h"
#include "driver/kept_recipes.h"
#include "driver/visit_outputs.h"
#include "events/event.h"
#include "run/build_env.h"

namespace Vesk {

class ScheduledBuild;
class TargetBuild;

/// What a visit leaves to the dependants.
struct TargetResult {
    VisitOutputs outputs;
    std::string stamp;                          ///< see DependencyStamp
    std::shared_ptr<ScheduledBuild> scheduled;  ///< which builds the target, or has; null: built
};

/// Whether the commands run although nothing has changed.
enum class Runs : std::uint8_t {
    AsNeeded,
    Again,   ///< in this build
    Always,  ///< in every build: that they have run is no news for the dependants
};

/// What a visit has found out.
struct BuildSubject {
    events::Subject seenAs;  ///< its target's name is what messages have
    std::string targetName;
    std::string note;  ///< "in target main::app (/p/vesk.txt:3)"
    std::string toolName;
    std::shared_ptr<Builder> builder;        ///< null: the recipes are those of a kept visit
    std::shared_ptr<TargetContext> context;  ///< resolved; null likewise
    std::vector<DependencyStamp> dependencies;
    ProjectCache& cache;
    std::string cacheKey;
    bool overlaps = false;  ///< it may be built while others are
    Runs runs = Runs::AsNeeded;
    HiddenValues hidden = {};

    /// Told when the cache has the record of the target, with the complete result and whether it
    /// is an earlier one; or empty.
    std::function<void(const TargetBuild&, const TargetResult&, bool hit)> ended = {};
};

/// Whose environment gets the variables of the target's ENV.
enum class VariablesOf : std::uint8_t {
    Process,   ///< vesk's own, from which commands inherit them; one target at a time
    Commands,  ///< only that of the commands
};

class TargetBuild {
  public:
    /// Makes the recipes. Throws what the builder throws.
    TargetBuild(const BuildSetting& setting, BuildSubject subject);

    /// Takes those of a visit that is kept. The subject has no builder.
    TargetBuild(const BuildSetting& setting, BuildSubject subject, KeptRecipes kept,
                TargetResult result);

    /// Of a visit that is kept and stands, with this result. Nothing is left to do but to wait for
    /// dependencies. The subject has no builder.
    TargetBuild(const BuildSetting& setting, BuildSubject subject, bool hasRecipes,
                TargetResult result);

    const BuildSubject& subject() const noexcept { return subject_; }
    const std::vector<Recipe>& recipes() const noexcept { return set_->recipes; }
    std::shared_ptr<const Recipe> recipe(std::size_t number) const;
    CacheStep& cache() noexcept { return *cache_; }
    const CacheStep& cache() const noexcept { return *cache_; }
    bool isKept() const noexcept { return subject_.builder == nullptr; }
    bool stands() const noexcept { return isKept() && !kept_; }

    /// Whether it is a list of commands, which start together.
    bool isList() const;

    /// What such a list makes without a recipe that declares it.
    std::vector<std::string> ownFiles() const;

    /// Those of the files that a compiler's command names and somebody else `isToMake`.
    std::vector<std::string> mentioned(std::size_t recipe,
                                       const std::function<bool(const std::string&)>& isToMake);

    /// Takes what the cache has, or runs what is stale, and returns when all is done.
    TargetResult buildNow();

    /// The pieces of that, for those who do not wait.
    ///
    /// What is known before anything has run: the outputs, and the stamp where `stampIsKnown`.
    TargetResult expected();
    bool stampIsKnown() const { return cache_->makesFiles() || !stampIsItsOwn(); }

    /// After a hit.
    TargetResult stored() const;

    /// After all recipes have run.
    TargetResult complete();

    /// The jobs of these recipes, with all that their commands need, for a thread that runs them.
    /// Throws as `prepared` and as Stage.
    std::unique_ptr<Stage> stageFor(const std::vector<std::size_t>& numbers);

    /// Tells how it ended; of a target without recipes only those who want to know everything.
    void tellEnd(TargetEnd end) const;

    /// Where the commands run, with the output directory. Throws when it cannot be made.
    BuildEnv& prepared(std::size_t jobs, const Recipe& first, VariablesOf variables);

    /// "NAME=value": what the target's ENV adds to the environment of its commands.
    std::vector<std::string> variables() const;

    std::string prefix() const { return "[" + name() + "] "; }
    const std::string& name() const noexcept { return subject_.seenAs.target; }

  private:
    KeptSteps keptSteps() const;
    void tellWhatMayFollow() const;
    bool stampIsItsOwn() const;
    bool isStoredAs(const TargetResult& result) const;
    std::string newStamp() const;
    TargetResult completeKept();
    bool runRecipes();
    HiddenValues hidden() const;
    void show(Stage& stage) const;
    void runStage(Stage stage, const std::vector<std::size_t>& numbers);
    BuildEnv& environment();
    void setVariables();

    const BuildSetting& setting_;
    BuildSubject subject_;
    std::shared_ptr<RecipeSet> set_;       ///< jobs share it
    std::unique_ptr<CacheStep> cache_;     ///< null: only the recipes are wanted
    std::optional<BuildEnv> environment_;  ///< made when it is needed first
    std::optional<KeptRecipes> kept_;
    TargetResult keptResult_;
    bool hasRecipes_ = true;
    std::optional<std::vector<std::string>> filesToBeMade_;
};

}  // namespace Vesk
