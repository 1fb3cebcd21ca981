// Finding the toolchains that are installed on this machine, with the detectors of the registered
// types (tool_registry.h).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "types/context/context.h"

namespace Vesk {

/// Values of the setting `toolchain_default`: chosen before all others; before those whose
/// toolchain_name the target asks for; never.
inline constexpr const char* kToolchainDefault = "toolchain_default";
inline constexpr const char* kMachineDefault = "machine";
inline constexpr const char* kFamilyDefault = "family";
inline constexpr const char* kNoDefault = "no";

/// A tool as it will stand in the registry file.
struct DetectedTool {
    std::string name;                  ///< an identifier, the same whenever the same tool is found
    std::shared_ptr<Context> context;  ///< with "tool_type" and "toolchain_name"
    bool inPath = false;               ///< found through PATH
};

/// Looks for the toolchains of one tool type. What it cannot use it leaves out.
using ToolchainDetector = std::vector<DetectedTool> (*)();

/// What all detectors find, in their order. One that throws is warned about; the others are still
/// asked. A tool that would be the machine's own is only its family's where PATH has one of an
/// earlier type for the same sources: whoever has that in PATH has put it there.
std::vector<DetectedTool> detectToolchains();

}  // namespace Vesk
