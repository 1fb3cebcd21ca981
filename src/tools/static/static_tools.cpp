#include "tools/static/static_tools.h"

#include <exception>
#include <memory>
#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "tools/static/basic_tool.h"
#include "tools/static/file_writer.h"
#include "tools/static/no_tool.h"

namespace Vesk {

bool createStaticTool(Toolbox& toolbox, std::string_view name, std::string_view typeWord) {
    std::unique_ptr<Matcher> matcher;
    try {
        if (const ToolType* type = findToolType(typeWord)) {
            matcher = type->factory(CiString(name), {}, {});
        }
    } catch (const VeskException& exception) {
        console::warning("{}", exception.report());
        return false;
    } catch (const std::exception& exception) {
        console::warning("Unable to create static tool '{}' ({}): {}", name, typeWord,
                         exception.what());
        return false;
    }
    if (!matcher) {
        console::warning("Unable to create static tool '{}' ({}).", name, typeWord);
        return false;
    }
    toolbox.add(std::move(matcher));
    return true;
}

void createStaticTools(Toolbox& toolbox) {
    createStaticTool(toolbox, "default_basic", RegisterBasicMatcher.word());
    createStaticTool(toolbox, "default_no_tool", RegisterNoToolMatcher.word());
    createStaticTool(toolbox, "default_file_writer", RegisterFileWriterMatcher.word());
    createStaticTool(toolbox, "default_pwsh", RegisterPowerShellMatcher.word());
}

}  // namespace Vesk
