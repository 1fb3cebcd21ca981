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

DeclaredTools makeDeclaredTools(const Registry& registry, const ProjectStore& store,
                                const Context& builtins, const Request& request,
                                platform::Questions& asked) {
    const events::Span span(events::Activity::Read, "toolchains");
    const platform::QuestionScope scope(asked);
    return {registry, store.projects(), [&](const Project& project) {
                return implicitLayers(project, builtins, *request.assignments);
            }};
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
            return session.declaredTools.of(project);
        },
        [&session](const Project& project) -> ProjectCache& { return session.caches.of(project); },
        {static_cast<int>(settings.jobCount), settings.rebuild, settings.dryRun, settings.keepGoing,
         false, hidden, settings.maxCommands},
    };
}

Session openSession(const Settings& given, UnitOutlines* outlines) {
    const events::Span span(events::Activity::Read, "project, registry and toolchains");
    Settings settings = given;
    UserRegistry registry;
    registry.read();
    Workspace workspace = loadWorkspaceOrUnit(settings, registry, outlines);
    const auto builtins = builtinVariables(workspace.root.directory);
    Positionals words = selectProfile(settings, workspace, registry);
    applyProjectOptions(settings, *workspace.project, *builtins);
    Request request = readRequest(settings, workspace, std::move(words));
    Toolbox staticTools = makeStaticTools();
    platform::Questions asked;
    DeclaredTools declared =
        makeDeclaredTools(registry.read(), *workspace.store, *builtins, request, asked);
    ProjectCatalog catalog = makeCatalog(workspace, *builtins, request);
    ProjectCaches caches(catalog.projects(),
                         settings.dryRun ? ProjectCaches::Use::look : ProjectCaches::Use::build);
    const auto surroundings =
        asked.repeatable
            ? std::optional(surroundingsOfRun(registry.read(), *builtins, request, asked))
            : std::nullopt;
    return {std::move(settings), std::move(request), std::move(staticTools),
            std::move(declared), std::move(catalog), std::move(caches),
            surroundings};
}

}  // namespace Vesk
