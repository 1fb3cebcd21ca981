// The LLVM toolchain, "llvm-clang": Clang, LLD and LLVM's binary utilities.
#pragma once

#include <memory>

#include "tools/discovery/toolchain_programs.h"
#include "tools/matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterLLVMMatcher;

/// Fits the targets that the GNU toolchain fits, and whatever TARGET_TRIPLE they are for.
class LLVMMatcher : public Matcher {
  public:
    /// Throws VeskException for a declaration without "toolchain_path".
    LLVMMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others);

    std::unique_ptr<Matcher> clone() const override;
    std::shared_ptr<Builder> createBuilder(const Context& target) const override;
    std::vector<CiString> comparedNames() const override;

  protected:
    MatchResult matchTool(const Context& target) const override;

  private:
    std::shared_ptr<ToolchainPrograms> programs_;
};

/// The Clang compilers of this machine: those in PATH, then in the places of LLVM's own packages.
std::vector<DetectedTool> detectLLVM();

}  // namespace Vesk
