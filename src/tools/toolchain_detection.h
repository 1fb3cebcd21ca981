// Finding the toolchains that are installed on this machine, with the detectors of the registered
// types (tool_registry.h).
#pragma once

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
using ToolchainDetector = std::vector<DetectedTool> (*)();

/// What all detectors find, in their order. One that throws is warned about; the
/// others are still asked.
std::vector<DetectedTool> detectToolchains();

}  // namespace Vesk
