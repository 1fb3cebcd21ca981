// Finds the toolchains installed on this machine, with the detectors of the registered types
// (tool_registry.h).
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "types/context/context.h"

namespace Vesk {

/// Values of the setting `toolchain_default`: chosen before all others; before others whose
/// toolchain_name the target asks for; never by default.
inline constexpr const char* kToolchainDefault = "toolchain_default";
inline constexpr const char* kMachineDefault = "machine";
inline constexpr const char* kFamilyDefault = "family";
inline constexpr const char* kNoDefault = "no";

/// A tool in the form that it will have in the registry file.
struct DetectedTool {
    std::string name;                  ///< an identifier, the same each time the same tool is found
    std::shared_ptr<Context> context;  ///< with "tool_type" and "toolchain_name"
    bool inPath = false;               ///< found through PATH
};

/// Looks for the toolchains of one tool type. Leaves out what it cannot use.
using ToolchainDetector = std::vector<DetectedTool> (*)();

/// What all detectors find, in their order. If one throws, a warning is printed and the others are
/// still asked. A tool that would be the machine's default is only its family's if PATH has one of
/// an earlier type for the same sources: whoever has that in PATH put it there on purpose.
std::vector<DetectedTool> detectToolchains();

}  // namespace Vesk
