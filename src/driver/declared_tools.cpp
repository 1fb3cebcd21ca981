#include "driver/declared_tools.h"

#include <exception>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/attempt.h"
#include "base/console.h"
#include "base/report.h"
#include "driver/input_context.h"
#include "project/project_paths.h"
#include "tools/create_tool.h"

namespace Vesk {
namespace {

constexpr const char* kRegistryOrigin = "Registry";

/// What the conditions of declarations can read in one project; assembled when the first one asks.
class Surroundings {
  public:
    Surroundings(const Project& project, const DeclaredTools::LayersOf& layersOf)
        : project_(project), layersOf_(layersOf) {}

    Context& context() {
        if (!context_) {
            const auto nothing = std::make_shared<Target>();
            nothing->setBody({});
            context_ = InputContext::forToolChoice(nothing, project_.name,
                                                   {nullptr, layersOf_(project_), {}});
        }
        return *context_;
    }

  private:
    const Project& project_;
    const DeclaredTools::LayersOf& layersOf_;
    std::shared_ptr<Context> context_;
};

bool isConditional(const ToolEntry& entry) {
    return entry.context && !entry.context->conditions().empty();
}

/// The tool's assignments with those of the conditional blocks that apply.
std::shared_ptr<const Context> evaluated(const ToolEntry& entry, Surroundings& surroundings) {
    if (!entry.context) {
        throw VeskException(entry.failure);
    }
    if (!isConditional(entry)) {
        return entry.context;
    }
    std::shared_ptr<Context> context = entry.context->deepCopy();
    context->setEnclosing(&surroundings.context());
    context->evaluateConditions();
    context->setEnclosing(nullptr);
    return context;
}

ToolDeclaration declaration(const std::string& origin, const ToolEntry& entry,
                            Surroundings& surroundings) {
    return {origin, entry.name, evaluated(entry, surroundings), entry.source};
}

/// One tool of a user's registry must not keep all of the user's projects from being built.
std::unique_ptr<Matcher> createRegistryTool(const ToolEntry& entry, Surroundings& surroundings) {
    std::unique_ptr<Matcher> tool;
    const auto failure =
        failureOf([&] { tool = createTool(declaration(kRegistryOrigin, entry, surroundings)); });
    if (failure) {
        reportWarning(fmt::format("{} tool '{}' is left out.", kRegistryOrigin, entry.name),
                      {*failure});
    }
    return tool;
}

/// The tools of the registry that have conditions, or those that have none and are the same for
/// every project.
std::vector<std::unique_ptr<Matcher>> createRegistryTools(const Registry& registry,
                                                          bool conditional,
                                                          Surroundings& surroundings) {
    std::vector<std::unique_ptr<Matcher>> tools;
    for (const auto& [name, entry] : registry.tools) {
        if (isConditional(entry) != conditional) {
            continue;
        }
        if (auto tool = createRegistryTool(entry, surroundings)) {
            tools.push_back(std::move(tool));
        }
    }
    return tools;
}

void addOwnTools(Toolbox& toolbox, const Project& project, Surroundings& surroundings) {
    const std::string origin = "Project '" + project.name + "'";
    for (const ToolEntry& entry : project.tools) {
        try {
            addTool(toolbox, declaration(origin, entry, surroundings));
        } catch (...) {
            rethrowWithNote("in tool '" + entry.name + "' in " + placeOf(project.file, entry.line));
        }
    }
}

}  // namespace

DeclaredTools::DeclaredTools(const Registry& registry, const std::vector<const Project*>& projects,
                             const LayersOf& layersOf) {
    std::optional<std::vector<std::unique_ptr<Matcher>>> unconditional;
    for (const Project* project : projects) {
        Surroundings surroundings(*project, layersOf);
        if (!unconditional) {
            unconditional = createRegistryTools(registry, false, surroundings);
        }
        Toolbox& toolbox = toolboxes_[project];
        for (const auto& tool : *unconditional) {
            toolbox.add(tool->clone());
        }
        for (auto& tool : createRegistryTools(registry, true, surroundings)) {
            toolbox.add(std::move(tool));
        }
        addOwnTools(toolbox, *project, surroundings);
    }
}

}  // namespace Vesk
