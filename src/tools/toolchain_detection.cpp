#include "tools/toolchain_detection.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/attempt.h"
#include "base/console.h"
#include "tools/tool_registry.h"

namespace Vesk {

namespace {

std::vector<DetectedTool> detect(const ToolType& type) {
    std::vector<DetectedTool> tools;
    if (const auto failure = failureOf([&] { tools = type.detect(); })) {
        console::warning("Unable to look for toolchains of type '{}': {}", type.word, *failure);
    }
    return tools;
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
