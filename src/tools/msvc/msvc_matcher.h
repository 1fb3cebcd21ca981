// The toolchain of Microsoft, "msvc": cl, link, lib, rc and mc, with the Windows SDK and the
// Windows Driver Kit.
#pragma once

#include <memory>

#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

class MsvcPrograms;

extern const ToolTypeRegistration RegisterMSVCMatcher;

/// Fits targets that name sources, objects, resource scripts or message files.
class MSVCMatcher : public Matcher {
  public:
    /// Throws VeskException for a declaration without "toolchain_path".
    MSVCMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;
    std::vector<CiString> comparedNames() const override;

  protected:
    MatchResult matchTool(const Context& target) const override;

  private:
    std::shared_ptr<MsvcPrograms> programs_;
};

/// The compilers of this machine: those that Visual Studio's installer knows, those in its usual
/// places, that of a developer prompt and those in PATH, for each machine that they make programs
/// for.
std::vector<DetectedTool> detectMSVC();

}  // namespace Vesk
