// What all builders of the C family have in common.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "run/build_env.h"
#include "tools/builder.h"

namespace Vesk {

/// Sources become objects in a first stage, with a recipe for each, and objects a product in a
/// second. Commands run in the project's root and name files relative to it.
class CBuilder : public Builder {
  public:
    std::string name() const override { return name_; }

    /// Runs `doCreateRecipes`, adds the variables that say where commands run and outputs go, then
    /// runs `postProcess`. The only process it starts is pkg-config; the only files it reads are
    /// resource scripts and what pkg-config reads; it searches directories only for patterns.
    RecipeSet createRecipes(TargetContext& target) final;

    Overlap overlap(const TargetContext&) const override { return Overlap::Always; }
    bool onlyMakesRecipes() const override { return true; }

    /// The libraries that LIBS may mean, and patterns if any text is one.
    LookedFor lookedFor(const TargetContext& target) const override;

    /// The exit code as the output "result".
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;

  protected:
    using Created = std::pair<std::vector<Recipe>, std::vector<Assignment>>;

    CBuilder(std::string name, AssignmentMap subjects);

    /// The recipes, and the outputs that the builder provides; those that the target declares are
    /// added. Throws VeskException for a target that cannot be built as written.
    virtual Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const = 0;

    /// A final change, for tools that need one.
    virtual void postProcess(TargetContext& target, const BuildEnv& environment,
                             RecipeSet& set) const;

  private:
    std::string name_;
};

/// Adds the outputs that the target itself declares to those that its builder provides.
void addDeclaredOutputs(const TargetContext& target, std::vector<Assignment>& outputs);

}  // namespace Vesk
