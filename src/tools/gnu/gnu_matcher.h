// The GNU toolchain, "gnu-gcc": GCC and the GNU binutils.
#pragma once

#include <memory>

#include "tools/discovery/toolchain_programs.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterGNUMatcher;

/// Fits targets that name sources, objects or an object to copy.
class GNUMatcher : public Matcher {
  public:
    /// Throws VeskException for a declaration without "toolchain_path".
    GNUMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;
    std::vector<CiString> comparedNames() const override;

  protected:
    MatchResult matchTool(const Context& target) const override;

  private:
    std::shared_ptr<ToolchainPrograms> programs_;
};

/// The GNU compilers of this machine: those in PATH, then in the places where Windows has them.
std::vector<DetectedTool> detectGNU();

}  // namespace Vesk
