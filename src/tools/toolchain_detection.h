// Finding the toolchains that are installed on this machine.
//
// Each toolchain registers a detector before main starts, by one ToolchainDetectorRegistration
// object; what tool_registry.h says about linking such objects holds here too.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "types/context.h"

namespace Vesk {

/// A tool as it will stand in the registry file.
struct DetectedTool {
    std::string name;                  ///< an identifier, the same whenever the same tool is found
    std::shared_ptr<Context> context;  ///< with "tool_type" and "toolchain_name"
};

/// Looks for the toolchains of one tool type. What it cannot use it leaves out.
using ToolchainDetector = std::function<std::vector<DetectedTool>()>;

class ToolchainDetectorRegistration {
  public:
    /// `toolType` as in ToolTypeRegistration. Detectors are asked in the order of `rank`, the
    /// lowest first.
    ToolchainDetectorRegistration(std::string toolType, int rank,
                                  const ToolchainDetector& detector);

    const std::string& toolType() const noexcept { return toolType_; }

  private:
    std::string toolType_;
};

/// What all detectors find, in their order. One that throws is warned about; the
/// others are still asked.
std::vector<DetectedTool> detectToolchains();

}  // namespace Vesk
