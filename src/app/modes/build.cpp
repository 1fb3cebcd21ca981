#include <functional>
#include <memory>
#include <vector>

#include "app/compile_commands.h"
#include "app/modes/modes.h"
#include "app/output_file.h"
#include "app/project_root.h"
#include "app/session.h"
#include "app/snapshot.h"
#include "app/unread_variables.h"
#include "base/console.h"
#include "driver/driver.h"
#include "types/errors.h"

namespace Vesk::modes {
namespace {

void printImplicitContexts(const ProjectCatalog& catalog) {
    for (const Project* project : catalog.projects()) {
        console::normal("Implicit context for project '{}':", project->name);
        catalog.implicitContext(*project)->print(console::level::kNormal);
    }
}

std::shared_ptr<Context> buildTarget(const Settings& settings, Session& session) {
    const TargetLocation target =
        session.catalog.locate(session.request.words.target.value_or(DependencyReference{}));
    HiddenValues hidden;
    hidden.add(*session.request.assignments);
    CompileCommands compileCommands;
    const bool collects = !settings.compileCommands.empty();
    Driver driver({
        session.catalog,
        session.staticTools,
        [&](const Project& project) -> const Toolbox& { return session.declaredTools.of(project); },
        [&](const Project& project) -> ProjectCache& { return session.caches.of(project); },
        {static_cast<int>(settings.jobCount), settings.rebuild, settings.dryRun, settings.keepGoing,
         hidden, settings.maxCommands},
        collects ? [&](const std::vector<Recipe>& recipes) { compileCommands.add(recipes); }
                 : std::function<void(const std::vector<Recipe>&)>(),
    });
    const std::shared_ptr<Context> outputs = driver.build(target);
    if (collects) {
        compileCommands.write(settings.compileCommands);
    }
    return outputs;
}

void buildAndWrite(const Settings& settings, Session& session) {
    const std::shared_ptr<Context> outputs = buildTarget(settings, session);
    if (!settings.dryRun) {
        writeOutputFile(settings.mainOutput, *outputs);
    }
}

/// A variable that is missing may have been text on the command line.
void buildNaming(const Settings& settings, Session& session) {
    try {
        buildAndWrite(settings, session);
    } catch (const NotFoundException& error) {
        rethrowWithLostQuotes(session.request.words, error.name());
    } catch (const MissingVariable& error) {
        rethrowWithLostQuotes(session.request.words, error.name());
    }
}

Session runBuild(const Settings& settings) {
    Session session = openSession(settings);
    reportUnreadVariables(settings.doubts, session);
    console::normal("Starting build");
    if (settings.dump) {
        printImplicitContexts(session.catalog);
    }
    try {
        buildNaming(settings, session);
    } catch (...) {
        session.caches.save();  // what was built before the failure is not built again
        throw;
    }
    session.caches.save();
    return session;
}

}  // namespace

int build(const Settings& settings) {
    // A run with more messages than usual is done, not repeated; a dry run writes nothing.
    if (console::threshold() < console::level::kNormal || settings.dryRun) {
        runBuild(settings);
        return 0;
    }
    Snapshot snapshot(findProjectRoot(settings).directory, settings.arguments);
    if (snapshot.repeats()) {
        return 0;
    }
    snapshot.begin();
    const Session session = runBuild(settings);
    snapshot.keep();  // while the session still locks the caches
    return 0;
}

}  // namespace Vesk::modes
