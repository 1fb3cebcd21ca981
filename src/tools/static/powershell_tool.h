// The PowerShell tool: the command tool with another interpreter.
#pragma once

#include <memory>

#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterPowerShellMatcher;

/// Fits targets that assign "pwsh"; built by a BasicBuilder.
class PowerShellMatcher : public Matcher {
  public:
    PowerShellMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;

  protected:
    MatchResult matchTool(const Context& target) const override;
};

}  // namespace Vesk
