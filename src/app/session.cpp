#include "app/session.h"

#include <utility>

#include "app/kept_visits.h"
#include "app/project_options.h"
#include "driver/builtin_variables.h"
#include "events/events.h"
#include "tools/static/static_tools.h"

namespace Vesk {
namespace {

Toolbox makeStaticTools() {
    Toolbox tools;
    createStaticTools(tools);
    return tools;
}

DeclaredTools makeDeclaredTools(const Registry& registry,
                                const std::vector<const Project*>& projects,
                                const Context& builtins, const Request& request) {
    const events::Span span(events::Activity::Read, "toolchains");
    return {registry, projects, [&](const Project& project) {
                return implicitLayers(project, builtins, *request.assignments);
            }};
}

/// The visit that needs them first does not ask for what they ask.
const Toolbox& declaredTools(Session& session, const Project& project) {
    if (!session.declaredTools) {
        platform::Questions asked;
        const platform::QuestionScope scope(asked);
        session.declaredTools =
            makeDeclaredTools(session.registry->read(), session.catalog.projects(),
                              *session.builtins, session.request);
    }
    return session.declaredTools->of(project);
}

}  // namespace

ProjectCatalog makeCatalog(Workspace& workspace, const Context& builtins, const Request& request) {
    ProjectCatalog catalog(std::move(*workspace.store), builtins, *request.overrides);
    catalog.setActive(*workspace.project);
    return catalog;
}

BuildSetting buildSetting(const Settings& settings, Session& session) {
    HiddenValues hidden;
    hidden.add(*session.request.assignments);
    return {
        session.catalog,
        session.staticTools,
        [&session](const Project& project) -> const Toolbox& {
            return declaredTools(session, project);
        },
        [&session](const Project& project) -> ProjectCache& { return session.caches.of(project); },
        {static_cast<int>(settings.jobCount), settings.rebuild, settings.dryRun, settings.keepGoing,
         false, hidden, settings.maxCommands},
    };
}

Session openSession(const Settings& given, UnitOutlines* outlines,
                    const std::optional<ContentHash>& surroundings) {
    const events::Span span(events::Activity::Read, "project, registry and toolchains");
    Settings settings = given;
    auto registry = std::make_unique<UserRegistry>();
    registry->offer();
    if (!surroundings) {
        registry->read();
    }
    Workspace workspace = loadWorkspaceOrUnit(settings, *registry, outlines);
    std::shared_ptr<Context> builtins = builtinVariables(workspace.root.directory);
    Positionals words = selectProfile(settings, workspace, *registry);
    applyProjectOptions(settings, *workspace.project, *builtins);
    Request request = readRequest(settings, workspace, std::move(words));
    Toolbox staticTools = makeStaticTools();
    ProjectCatalog catalog = makeCatalog(workspace, *builtins, request);
    ProjectCaches caches(catalog.projects(),
                         settings.dryRun ? ProjectCaches::Use::look : ProjectCaches::Use::build);
    // While another vesk built, the registry may have changed.
    const bool areKnown = surroundings && !caches.hasWaited();
    std::optional<DeclaredTools> declared;
    platform::Questions asked;
    if (!areKnown) {
        const Registry& read = registry->read();  // its hash stands for what this asks
        const platform::QuestionScope scope(asked);
        declared = makeDeclaredTools(read, catalog.projects(), *builtins, request);
    }
    std::optional<ContentHash> found;
    if (areKnown) {
        found = surroundings;
    } else if (asked.repeatable) {
        found = surroundingsOfRun(registry->read(), *builtins, request, asked);
    }
    return {std::move(settings), std::move(request),  std::move(staticTools),
            std::move(registry), std::move(builtins), std::move(declared),
            std::move(catalog),  std::move(caches),   found};
}

}  // namespace Vesk
