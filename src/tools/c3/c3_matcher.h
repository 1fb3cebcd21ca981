// The C3 toolchain, "c3c": the compiler of the language C3, which links by itself.
#pragma once

#include <memory>

#include "tools/discovery/toolchain_programs.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterC3Matcher;

/// Fits targets that name C3 sources, whatever they are built for.
class C3Matcher : public Matcher {
  public:
    /// Throws VeskException for a declaration without "toolchain_path".
    C3Matcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;
    std::vector<CiString> comparedNames() const override;

  protected:
    MatchResult matchTool(const Context& target) const override;

  private:
    std::shared_ptr<ToolchainPrograms> programs_;
};

/// The C3 compilers of this machine: those in PATH, then in C3C_HOME and the usual places.
std::vector<DetectedTool> detectC3();

}  // namespace Vesk
