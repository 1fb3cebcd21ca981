// Tools from the side that builds: how a target becomes commands.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "run/recipe.h"
#include "tools/match.h"
#include "tools/variable_table.h"
#include "types/model/target.h"

namespace Vesk {

class BuildEnv;

/// What a builder makes from a target.
struct RecipeSet {
    std::vector<Recipe> recipes;          ///< the commands to run, before those of commandRecipes
    std::vector<Assignment> assignments;  ///< outputs of the target, known before anything runs
    bool ok = false;                      ///< set by every builder that succeeds
};

/// Whether a target may be built while others are.
enum class Overlap {
    Never,
    WhenAsked,  ///< if the target or its project asks for it
    Always,
};

/// Files whose existence the recipes depend on, besides the target's context.
struct LookedFor {
    bool patterns = true;            ///< files in directories, or files named in sources
    std::vector<std::string> files;  ///< these, absolute, with forward slashes
};

/// The command of a recipe, and those that follow it.
std::vector<Command> commandsIn(const Recipe& recipe);

/// Turns the resolved context of a target into recipes. Made for one target by its tool. Called on
/// the driver's thread only.
class Builder {
  public:
    virtual ~Builder() = default;

    virtual std::string name() const { return "builder"; }

    /// Called once before the recipes run, with the first recipe and the prepared environment.
    virtual void prepare(const Recipe& first, BuildEnv& environment);

    /// Called after the last stage with the exit code of the target's commands. Returns the outputs
    /// that are known only now. Throws VeskException if work of its own fails.
    virtual std::shared_ptr<Context> complete(TargetContext& target, int exitCode) = 0;

    virtual Overlap overlap(const TargetContext& target) const;

    /// What `complete` will return after success. Called before anything has run, for targets that
    /// may overlap with others. By default it calls `complete`, which then must have no side
    /// effects.
    virtual std::shared_ptr<Context> expectedCompletion(TargetContext& target);

    /// What `createRecipes` will look for. It is called only when nothing of that is still to be
    /// made.
    virtual LookedFor lookedFor(const TargetContext& target) const;

    /// Whether the target leaves the builder's subjects to it: none of them may be an output there.
    /// Records how each subject's text compares with the builder's own value, if it has one.
    virtual MatchResult match(const Context& target) const;

    /// Throws VeskException for a target that the tool cannot build as written.
    virtual RecipeSet createRecipes(TargetContext& target) = 0;

    /// The recipes for the commands that the target spells out itself.
    virtual std::vector<Recipe> commandRecipes(TargetContext& target);

    /// Whether making recipes is all that it does for a target: nothing comes before or after their
    /// commands, and `complete` returns the same after every success.
    virtual bool onlyMakesRecipes() const { return false; }

    /// The commands of a job: what runs, in order, for one recipe.
    virtual std::vector<Command> commandsOf(const Recipe& recipe,
                                            const BuildEnv& environment) const;

    /// The variables that the builder consumes from a target.
    const AssignmentMap& subjects() const noexcept { return subjects_; }

    /// The variables that decide what the builder makes of a target: its subjects and its settings,
    /// each with the value that counts. The builder may read another variable only if its recipes
    /// show it.
    std::vector<Assignment> variablesRead(const Context& target) const;

  protected:
    /// `settings` are the tool's own values, used if a target gives none.
    explicit Builder(AssignmentMap subjects, AssignmentMap settings = {});
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    /// The value of a setting in the target, otherwise the tool's own; null if neither has one.
    ValuePtr settingOr(const Context& target, std::string_view name) const;

  private:
    AssignmentMap subjects_;
    AssignmentMap settings_;
};

}  // namespace Vesk
