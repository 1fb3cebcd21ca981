#include "project/tool_entry.h"

#include <algorithm>

#include "types/context/context_template.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

/// How often a variable is assigned. The entry as it is written shows more than its context, in
/// which one name stands once.
std::size_t timesAssigned(const ToolEntry& tool, std::string_view name) {
    if (!tool.source) {
        return tool.context->find(name) != nullptr ? 1 : 0;
    }
    const auto& written = tool.source->assignments;
    return static_cast<std::size_t>(
        std::count_if(written.begin(), written.end(),
                      [&](const Assignment& each) { return equalsIgnoringCase(each.name, name); }));
}

}  // namespace

std::string toolTypeOf(const ToolEntry& tool) {
    const std::string subject = "Build tool '" + tool.name + "' has ";
    if (!tool.context) {
        throw VeskException(subject + "no context.");
    }
    const std::size_t times = timesAssigned(tool, "tool_type");
    if (times > 1) {
        throw VeskException(subject + "multiple 'tool_type' assignments.");
    }
    if (times == 0) {
        throw VeskException(subject + "no 'tool_type'.");
    }
    std::string type = tool.context->textOf("tool_type").value_or("");
    if (type.empty()) {
        throw VeskException(subject + "empty 'tool_type'.");
    }
    return type;
}

std::optional<std::string> toolchainNameOf(const Context* context) {
    if (context == nullptr) {
        throw VeskException("Build tool context is null.");
    }
    return context->textOf("toolchain_name");
}

std::optional<std::string> toolchainNameOf(const ToolEntry& tool) {
    if (tool.context && timesAssigned(tool, "toolchain_name") > 1) {
        // The text says 'name', as it always has.
        throw VeskException("Build tool context has multiple 'name' assignments.");
    }
    return toolchainNameOf(tool.context.get());
}

}  // namespace Vesk
