#include <vector>

#include "app/modes/modes.h"
#include "app/user_registry.h"
#include "base/console.h"
#include "tools/toolchain_detection.h"

namespace Vesk::modes {

int findCompilers(const Settings& /*settings*/) {
    UserRegistry registry;
    const std::filesystem::path file = registry.read().file;
    const std::vector<DetectedTool> found = detectToolchains();
    if (found.empty()) {
        console::warning("No toolchain of a known type was found.");
    }
    updateRegistry(file, [&found](Registry& current) {
        for (const DetectedTool& tool : found) {
            current.registerTool(tool.name, tool.context);
        }
    });
    for (const DetectedTool& tool : found) {
        console::normal("Registered toolchain '{}'.", tool.name);
    }
    return 0;
}

}  // namespace Vesk::modes
