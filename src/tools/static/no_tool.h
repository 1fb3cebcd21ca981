// The no-op tool: a target with NO_TOOL counts as built without running anything.
#pragma once

#include <memory>
#include <string>

#include "tools/builder.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterNoToolMatcher;

class NoToolMatcher : public Matcher {
  public:
    NoToolMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;

  protected:
    /// Makes NO_TOOL a full match, so that it wins against tools that would run something.
    MatchResult matchTool(const Context& target) const override;
};

class NoToolBuilder : public Builder {
  public:
    NoToolBuilder();

    std::string name() const override { return "no_tool"; }
    Overlap overlap(const TargetContext&) const override { return Overlap::Always; }
    LookedFor lookedFor(const TargetContext&) const override { return {false, {}}; }
    bool onlyMakesRecipes() const override { return true; }
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;
    RecipeSet createRecipes(TargetContext& target) override;
};

}  // namespace Vesk
