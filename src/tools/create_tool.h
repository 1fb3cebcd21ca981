// From the declaration of a tool to the tool.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tools/toolbox.h"
#include "types/context/context_template.h"

namespace Vesk {

/// A tool as a project or the registry declares it.
struct ToolDeclaration {
    std::string origin;  ///< who declares it, for messages: "Registry"
    std::string name;
    std::shared_ptr<const Context> context;                   ///< its assignments; may be missing
    std::shared_ptr<const ContextTemplate> source = nullptr;  ///< the same as written, when known:
                                                              ///< what is given twice shows here
};

/// Makes the tool, or returns null after a warning that says why it is left out. The tool shares
/// nothing with the declaration.
std::unique_ptr<Matcher> createTool(const ToolDeclaration& tool);

/// Makes the tool and adds it, with a notice when it replaces one. False when it is left out.
bool addTool(Toolbox& toolbox, const ToolDeclaration& tool);

}  // namespace Vesk
