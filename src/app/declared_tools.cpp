#include "app/declared_tools.h"

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "project/project_paths.h"
#include "tools/create_tool.h"

namespace Vesk {
namespace {

constexpr const char* kRegistryOrigin = "Registry";

/// The tool's assignments with those of the conditional blocks that apply.
std::shared_ptr<const Context> evaluated(const ToolEntry& entry, Context& builtins) {
    if (entry.context->conditions().empty()) {
        return entry.context;
    }
    std::shared_ptr<Context> context = entry.context->deepCopy();
    context->setEnclosing(&builtins);
    context->evaluateConditions();
    context->setEnclosing(nullptr);
    return context;
}

ToolDeclaration declaration(const std::string& origin, const ToolEntry& entry, Context& builtins) {
    return {origin, entry.name, evaluated(entry, builtins), entry.source};
}

/// One tool of a user's registry must not keep all of the user's projects from being built.
std::unique_ptr<Matcher> createRegistryTool(const ToolEntry& entry, Context& builtins) {
    std::string reason;
    try {
        return createTool(declaration(kRegistryOrigin, entry, builtins));
    } catch (const VeskException& error) {
        reason = error.report();
    } catch (const std::exception& error) {
        reason = error.what();
    }
    console::warning("{} tool '{}' is left out: {}", kRegistryOrigin, entry.name, reason);
    return nullptr;
}

std::vector<std::unique_ptr<Matcher>> createRegistryTools(const Registry& registry,
                                                          Context& builtins) {
    std::vector<std::unique_ptr<Matcher>> tools;
    for (const auto& [name, entry] : registry.tools) {
        if (auto tool = createRegistryTool(entry, builtins)) {
            tools.push_back(std::move(tool));
        }
    }
    return tools;
}

void addOwnTools(Toolbox& toolbox, const Project& project, Context& builtins) {
    const std::string origin = "Project '" + project.name + "'";
    for (const ToolEntry& entry : project.tools) {
        try {
            addTool(toolbox, declaration(origin, entry, builtins));
        } catch (...) {
            rethrowWithNote("in tool '" + entry.name + "' in " + placeOf(project.file, entry.line));
        }
    }
}

}  // namespace

DeclaredTools::DeclaredTools(const Registry& registry, const std::vector<const Project*>& projects,
                             Context& builtins) {
    const auto registryTools = createRegistryTools(registry, builtins);
    for (const Project* project : projects) {
        Toolbox& toolbox = toolboxes_[project];
        for (const auto& tool : registryTools) {
            toolbox.add(tool->clone());
        }
        addOwnTools(toolbox, *project, builtins);
    }
}

}  // namespace Vesk
