// The C3 toolchain, "c3c": the compiler of the language C3, which also links.
#pragma once

#include <memory>

#include "tools/discovery/toolchain_matcher.h"
#include "tools/tool_registry.h"

namespace Vesk {

extern const ToolTypeRegistration RegisterC3Matcher;

struct C3Toolchain {
    static const ToolchainTraits kTraits;

    std::shared_ptr<Builder> builder(const Context& target, DeclaredPlace place) const;

    std::shared_ptr<ToolchainPrograms> programs = std::make_shared<ToolchainPrograms>("c3c");
};

/// Fits targets that name C3 sources, for any machine.
using C3Matcher = ToolchainMatcher<C3Toolchain>;

/// The C3 compilers of this machine: those in PATH, then in C3C_HOME and the usual places.
std::vector<DetectedTool> detectC3();

}  // namespace Vesk
