// Makes a tool from its declaration.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tools/toolbox.h"
#include "types/context/context_template.h"

namespace Vesk {

/// A tool as a project or the registry declares it.
struct ToolDeclaration {
    std::string origin;  ///< the declaring file for messages: "Registry"
    std::string name;
    std::shared_ptr<const Context> context;  ///< its assignments; may be missing
    std::shared_ptr<const ContextTemplate> source =
        nullptr;  ///< as written, if known; shows duplicates
};

/// Makes the tool, or returns null after a warning that says why it is left out. The tool shares
/// nothing with the declaration.
std::unique_ptr<Matcher> createTool(const ToolDeclaration& tool);

/// Makes the tool and adds it, with a message if it replaces one. False if it is left out.
bool addTool(Toolbox& toolbox, const ToolDeclaration& tool);

}  // namespace Vesk
