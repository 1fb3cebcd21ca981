// Tools, seen from the side that builds: how a target becomes commands.
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

/// What a builder makes of a target.
struct RecipeSet {
    std::vector<Recipe> recipes;          ///< the commands to run, before those of commandRecipes
    std::vector<Assignment> assignments;  ///< outputs of the target, known before anything runs
    bool ok = false;                      ///< set by every builder that succeeded
};

/// Whether a target may be built while others are.
enum class Overlap {
    Never,
    WhenAsked,  ///< where the target or its project asks for it
    Always,
};

/// What the recipes depend on besides the target's context: files that are looked for.
struct LookedFor {
    bool patterns = true;  ///< whatever lies in some directories, or what is written in sources
    std::vector<std::string> files;  ///< these, absolute, with forward slashes
};

/// Turns the resolved context of a target into recipes. Made for one target by its tool. Called on
/// the driver's thread only.
class Builder {
  public:
    virtual ~Builder() = default;

    virtual std::string name() const { return "builder"; }

    /// Called once before the recipes run, with the first of them and the prepared environment.
    virtual void prepare(const Recipe& first, BuildEnv& environment);

    /// Called after the last stage with the exit code of the target's commands. Returns the outputs
    /// that are known only now; throws VeskException when work of its own fails.
    virtual std::shared_ptr<Context> complete(TargetContext& target, int exitCode) = 0;

    virtual Overlap overlap(const TargetContext& target) const;

    /// What `complete` will return after success. Asked, before anything has run, of targets that
    /// may overlap with others; as it stands `complete` has no effect but its result.
    virtual std::shared_ptr<Context> expectedCompletion(TargetContext& target);

    /// What `createRecipes` will look for: it is called when nobody has still to make that.
    virtual LookedFor lookedFor(const TargetContext& target) const;

    /// Whether the target leaves the builder's subjects to it: none may be an output there. Records
    /// how each subject's text compares with the builder's own value, where it has one.
    virtual MatchResult match(const Context& target) const;

    /// Throws VeskException for a target that the tool cannot build as it is written.
    virtual RecipeSet createRecipes(TargetContext& target) = 0;

    /// The recipes for the commands that the target itself spells out.
    virtual std::vector<Recipe> commandRecipes(TargetContext& target);

    /// The commands of a job: what runs, in order, for one recipe.
    virtual std::vector<Command> commandsOf(const Recipe& recipe,
                                            const BuildEnv& environment) const;

    /// The variables that the builder consumes from a target.
    const AssignmentMap& subjects() const noexcept { return subjects_; }

    /// What decides what the builder makes of a target: its subjects and its settings, each with
    /// the value that counts. Of others a builder may only read what its recipes show.
    std::vector<Assignment> variablesRead(const Context& target) const;

  protected:
    /// `settings` are the tool's own values, used where a target gives none.
    explicit Builder(AssignmentMap subjects, AssignmentMap settings = {});
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    /// The value of a setting in the target, else the tool's own; null when neither has one.
    ValuePtr settingOr(const Context& target, std::string_view name) const;

  private:
    AssignmentMap subjects_;
    AssignmentMap settings_;
};

}  // namespace Vesk
