// Choosing the tool for a target.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tools/builder.h"
#include "tools/toolbox.h"

namespace Vesk {

struct ToolChoice {
    const Matcher* tool = nullptr;
    std::int32_t score = 0;
    MatchResult report;
    std::shared_ptr<Builder> builder;
};

/// The best tool of both boxes for the target; a declared tool wins a tie. Names the winner at
/// detail level. `trial` is the context as InputContext::trial gives it; the values that the tools
/// compare are resolved in it. Throws VeskException when no tool can build the target.
ToolChoice chooseTool(Context& trial, const std::string& displayName, const Toolbox& staticTools,
                      const Toolbox& declaredTools);

/// Writes the tool selection report.
void reportToolChoice(const ToolChoice& choice);

}  // namespace Vesk
