// Microsoft's toolchain, "msvc": cl, link, lib, rc and mc, with the Windows SDK and the Windows
// Driver Kit.
#pragma once

#include <memory>

#include "tools/discovery/toolchain_matcher.h"
#include "tools/msvc/msvc_programs.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterMSVCMatcher;

struct MsvcToolchain {
    static const ToolchainTraits kTraits;

    /// A declaration that does not name its machine is for x64.
    static AssignmentMap completed(const AssignmentMap& must, AssignmentMap others);

    std::shared_ptr<Builder> builder(const Context& target, DeclaredPlace place) const;

    std::shared_ptr<MsvcPrograms> programs = std::make_shared<MsvcPrograms>();
};

/// Fits targets that name sources, objects, resource scripts or message files.
using MSVCMatcher = ToolchainMatcher<MsvcToolchain>;

/// The compilers of this machine: those that Visual Studio's installer knows, those in its usual
/// places, that of a developer prompt and those in PATH, for each machine that they make programs
/// for.
std::vector<DetectedTool> detectMSVC();

}  // namespace Vesk
