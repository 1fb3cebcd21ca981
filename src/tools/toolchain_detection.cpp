#include "tools/toolchain_detection.h"

#include <exception>
#include <iterator>
#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "tools/tool_registry.h"

namespace Vesk {

namespace {

std::vector<DetectedTool> detect(const ToolType& type) {
    std::string reason;
    try {
        return type.detect();
    } catch (const VeskException& exception) {
        reason = exception.report();
    } catch (const std::exception& exception) {
        reason = reportOf(exception);
    }
    console::warning("Unable to look for toolchains of type '{}': {}", type.word, reason);
    return {};
}

}  // namespace

std::vector<DetectedTool> detectToolchains() {
    std::vector<DetectedTool> all;
    for (const ToolType* type : toolTypes()) {
        if (type->isToolchain()) {
            std::vector<DetectedTool> found = detect(*type);
            all.insert(all.end(), std::make_move_iterator(found.begin()),
                       std::make_move_iterator(found.end()));
        }
    }
    return all;
}

}  // namespace Vesk
