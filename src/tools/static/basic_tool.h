// The command tool: runs the commands that a target spells out.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/builder.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterBasicMatcher;

extern const VariableGroup kCommandPlace;   ///< cwd
extern const VariableGroup kCommandResult;  ///< result

/// Fits targets that assign "cmdline".
class BasicMatcher : public Matcher {
  public:
    BasicMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;

  protected:
    MatchResult matchTool(const Context& target) const override;
};

/// One command for a single value, one for each item of a list, all run in the directory that the
/// target's "cwd" names.
class BasicBuilder : public Builder {
  public:
    /// `shell` as in Recipe.
    BasicBuilder(std::string commandVariable, std::uint32_t shell);

    std::string name() const override { return commandVariable_; }

    Overlap overlap(const TargetContext&) const override { return Overlap::WhenAsked; }
    LookedFor lookedFor(const TargetContext&) const override { return {false, {}}; }

    /// The exit code as the output "result".
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;

    /// Only the target's output assignments.
    RecipeSet createRecipes(TargetContext& target) override;

    std::vector<Recipe> commandRecipes(TargetContext& target) override;

  private:
    std::string commandVariable_;
    std::uint32_t shell_;
};

}  // namespace Vesk
