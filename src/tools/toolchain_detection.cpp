#include "tools/toolchain_detection.h"

#include <algorithm>
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

bool areRivals(const ToolType& a, const ToolType& b) {
    return std::ranges::find_first_of(a.sources, b.sources) != a.sources.end();
}

void makeFamilyDefaults(std::vector<DetectedTool>& tools) {
    for (const DetectedTool& tool : tools) {
        if (tool.context->textOf(kToolchainDefault) == kMachineDefault) {
            tool.context->addAssignment(textAssignment(kToolchainDefault, kFamilyDefault),
                                        ModifierMode::Copy);
        }
    }
}

}  // namespace

std::vector<DetectedTool> detectToolchains() {
    std::vector<DetectedTool> all;
    std::vector<const ToolType*> inPath;
    for (const ToolType* type : toolTypes()) {
        if (type->isToolchain()) {
            std::vector<DetectedTool> found = detect(*type);
            if (std::ranges::any_of(inPath, [type](const ToolType* earlier) {
                    return areRivals(*earlier, *type);
                })) {
                makeFamilyDefaults(found);
            }
            if (std::ranges::any_of(found, &DetectedTool::inPath)) {
                inPath.push_back(type);
            }
            all.insert(all.end(), std::make_move_iterator(found.begin()),
                       std::make_move_iterator(found.end()));
        }
    }
    return all;
}

}  // namespace Vesk
