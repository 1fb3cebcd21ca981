// The tools that exist in every run without being declared.
#pragma once

#include <string_view>

#include "tools/toolbox.h"

namespace Vesk {

/// Adds default_basic, default_no_tool, default_file_writer and default_pwsh. One that cannot be
/// created is left out with a warning.
void createStaticTools(Toolbox& toolbox);

/// Adds one of them, a tool of a registered type without a declaration. False if it is left out.
bool createStaticTool(Toolbox& toolbox, std::string_view name, std::string_view typeWord);

}  // namespace Vesk
