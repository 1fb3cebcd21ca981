// The command tools. They run the commands that a target spells out, each with its interpreter.
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
extern const ToolTypeRegistration RegisterPowerShellMatcher;

/// How they differ.
struct CommandTool {
    const char* typeWord;
    const char* variable;  ///< whose value is the command
    std::uint32_t shell;   ///< as in Recipe
};

inline constexpr CommandTool kInterpreterTool = {"command", "cmdline", shell::kInterpreter};
inline constexpr CommandTool kPowerShellTool = {"pwsh", "pwsh", shell::kPowershell};

/// One command for a single value, one for each item of a list. All run in the directory that the
/// target's "cwd" names.
class BasicBuilder : public Builder {
  public:
    explicit BasicBuilder(const CommandTool& tool)
        : Builder(makeTable({{tool.variable}})), tool_(tool) {}

    std::string name() const override { return tool_.variable; }

    Overlap overlap(const TargetContext&) const override { return Overlap::WhenAsked; }
    LookedFor lookedFor(const TargetContext&) const override { return {false, {}}; }

    /// The exit code as the output "result".
    bool onlyMakesRecipes() const override { return true; }
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;

    /// Only the target's output assignments.
    RecipeSet createRecipes(TargetContext& target) override;

    std::vector<Recipe> commandRecipes(TargetContext& target) override;

  private:
    const CommandTool& tool_;
};

/// Fits targets that assign the tool's variable.
template <const CommandTool& tool>
class CommandMatcher : public Matcher {
  public:
    CommandMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others)
        : Matcher(name, tool.typeWord, makeTable({{"cwd"}}), makeTable({{tool.variable}}), must,
                  others) {}

    std::unique_ptr<Matcher> clone() const override {
        return std::make_unique<CommandMatcher>(*this);
    }
    std::shared_ptr<Builder> createBuilder(const Context&) const override {
        return std::make_shared<BasicBuilder>(tool);
    }

  protected:
    MatchResult matchTool(const Context&) const override { return {{}, MatchNote::BuildPossible}; }
};

using BasicMatcher = CommandMatcher<kInterpreterTool>;
using PowerShellMatcher = CommandMatcher<kPowerShellTool>;

}  // namespace Vesk
