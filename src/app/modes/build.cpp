#include <memory>
#include <vector>

#include "app/build_summary.h"
#include "app/compile_commands.h"
#include "app/kept_database.h"
#include "app/kept_visits.h"
#include "app/modes/modes.h"
#include "app/output_file.h"
#include "app/progress.h"
#include "app/project_root.h"
#include "app/session.h"
#include "app/snapshot.h"
#include "app/unread_variables.h"
#include "base/console.h"
#include "base/interruption.h"
#include "base/text.h"
#include "driver/build_errors.h"
#include "driver/driver.h"
#include "driver/visit_tree.h"
#include "events/events.h"
#include "platform/memory.h"
#include "types/values/errors.h"

namespace Vesk::modes {
namespace {

namespace fs = std::filesystem;

void printImplicitContexts(const ProjectCatalog& catalog) {
    for (const Project* project : catalog.projects()) {
        console::normal("Implicit context for project '{}':", project->name);
        catalog.implicitContext(*project)->print(console::level::kNormal);
    }
}

/// Keeps the project's compilation database current, and writes the one that was asked for: of the
/// whole project where no target is named.
void writeCompileCommands(const Settings& settings, const Session& session,
                          const BuildSetting& setting, const CompileCommands& built,
                          VisitKeeper* keeper) {
    const Project& project = session.catalog.active();
    const std::string kept =
        settings.dryRun ? std::string() : compilationDatabaseOf(session.catalog, project);
    const bool wholeIsAsked = !settings.compileCommands.empty() && !session.request.words.target;
    if (!kept.empty()) {
        keepDatabaseCurrent(kept, session, setting, keeper);
    }
    if (wholeIsAsked) {
        CompileCommands whole;
        whole.addProject(setting, project);
        whole.write(settings.compileCommands);
    } else if (!settings.compileCommands.empty()) {
        built.write(settings.compileCommands);
    }
}

/// Builds, and says in the end how it went if that was asked for, or if more than one command can
/// have failed.
VisitOutputs buildAndSumUp(const BuildSetting& setting, const TargetLocation& target,
                           const Settings& settings, const BuildSummary& summary) {
    try {
        VisitOutputs outputs = Driver(setting).build(target);
        if (settings.summary) {
            summary.print();
        }
        return outputs;
    } catch (const Interrupted&) {
        if (settings.summary) {
            summary.print();
        }
        throw;
    } catch (const BuildFailed&) {
        if (settings.summary || settings.keepGoing || settings.jobCount > 1) {
            rethrowWithNote(joined(summary.lines(), "\n"));
        }
        throw;
    } catch (...) {
        if (settings.summary) {
            rethrowWithNote(joined(summary.lines(), "\n"));
        }
        throw;
    }
}

/// What a run takes from earlier ones and leaves to later ones.
struct Keeping {
    fs::path directory;  ///< of the project; empty: nothing is left
    VisitStore visits;
    VisitTree tree;
    Snapshot* snapshot = nullptr;             ///< null: the run is not one that is repeated
    std::optional<ContentHash> surroundings;  ///< of the visits; see KeptTree
};

VisitOutputs buildTarget(const Settings& settings, Session& session, VisitKeeper* keeper,
                         Keeping& keeping) {
    const TargetLocation target =
        session.catalog.locate(session.request.words.target.value_or(DependencyReference{}));
    const BuildSetting setting = buildSetting(settings, session);
    BuildSetting collecting = setting;
    BuildSummary summary(settings.dryRun);
    Progress progress(settings, summary);
    collecting.events = &progress;
    BuildReasons reasons(settings.why ? BuildReasons::Show::yes : BuildReasons::Show::no);
    collecting.options.reasons = settings.why || settings.dryRun ? &reasons : nullptr;
    collecting.keeper = keeper;
    CompileCommands built;
    if (keeping.snapshot != nullptr) {
        collecting.tree = &keeping.tree;
        if (keeper == nullptr || !keeper->use().takes) {
            keeping.snapshot->dropStanding();
        }
        collecting.standing = keeping.snapshot->standing();
        keeping.snapshot->visitsBegin();
    }
    if (!settings.compileCommands.empty()) {
        collecting.onRecipes = [&](const std::vector<Recipe>& recipes) { built.add(recipes); };
    }
    VisitOutputs outputs = buildAndSumUp(collecting, target, settings, summary);
    if (settings.why && !reasons.any()) {
        console::writeAnswer("Nothing has to be built.");
    }
    writeCompileCommands(settings, session, setting, built, keeper);
    return outputs;
}

void buildAndWrite(const Settings& settings, Session& session, Keeping& keeping) {
    VisitKeeper keeper(keeping.visits, visitKeeping(settings), [&](const Project& project) {
        return surroundingsIn(project, *session.surroundings);
    });
    const VisitOutputs outputs =
        buildTarget(settings, session, session.surroundings ? &keeper : nullptr, keeping);
    if (!settings.dryRun && !settings.mainOutput.empty()) {
        writeOutputFile(settings.mainOutput, *outputs.context());
    }
}

/// A variable that is missing may have been text on the command line.
void buildNaming(const Settings& settings, Session& session, Keeping& keeping) {
    try {
        buildAndWrite(settings, session, keeping);
    } catch (const NotFoundException& error) {
        rethrowWithLostQuotes(session.request.words, error.name());
    } catch (const MissingVariable& error) {
        rethrowWithLostQuotes(session.request.words, error.name());
    }
}

/// While the session still locks the caches.
void keepFailedRun(Keeping& keeping, const Session& session) {
    if (keeping.snapshot != nullptr) {
        keeping.snapshot->end({});
    }
    saveVisits(keeping.visits, keeping.directory);
    if (keeping.snapshot != nullptr && session.caches.areLocked()) {
        keeping.snapshot->keepStanding(session.caches.ownFiles());
    }
}

Session runBuild(const Settings& given, Keeping& keeping) {
    KeptOutlines outlines(keeping.visits, visitKeeping(given));
    Session session = openSession(given, &outlines, keeping.surroundings);
    if (keeping.snapshot != nullptr) {
        keeping.snapshot->haveCaches(session.caches.hasWaited());
    }
    if (keeping.snapshot != nullptr && keeping.snapshot->saidNothing()) {
        keeping.surroundings = session.surroundings;
    }
    const Settings& settings = session.settings;
    reportUnreadVariables(settings.doubts, session);
    console::normal("Starting build");
    if (settings.dump) {
        printImplicitContexts(session.catalog);
    }
    try {
        buildNaming(settings, session, keeping);
    } catch (...) {
        session.caches.save();  // what was built before the failure is not built again
        if (!settings.dryRun) {
            keepFailedRun(keeping, session);
        }
        throw;
    }
    session.caches.save();
    return session;
}

/// Whether the next run with the same command line will do nothing but ask. What it asks besides
/// its visits is added to the questions.
bool isQuietNextTime(Keeping& keeping, const Session& session) {
    const std::string database = compilationDatabaseOf(session.catalog, session.catalog.active());
    return visitKeeping(session.settings).takes && session.settings.mainOutput.empty() &&
           (database.empty() ||
            expectDatabase(database, session, keeping.visits, keeping.tree.questions()));
}

/// While the session still locks the caches.
void keepRun(Keeping& keeping, const Session& session) {
    const std::vector<fs::path> ownFiles = session.caches.ownFiles();
    Snapshot& snapshot = *keeping.snapshot;
    snapshot.end(ownFiles);
    saveVisits(keeping.visits, keeping.directory);
    if (session.caches.areLocked() &&
        (!isQuietNextTime(keeping, session) ||
         !snapshot.keepForeseen(keeping.tree, keeping.visits, ownFiles, keeping.surroundings))) {
        snapshot.keep();
    }
}

/// Something that lives as long as the process: taking apart what a run has put together is up to a
/// sixth of its work, and the system does it at once.
template <class T>
T& leftAlone(std::unique_ptr<T> whole) {
    static T* kept = nullptr;  // leak checkers see it here
    kept = whole.release();
    return *kept;
}

bool repeats(Snapshot& snapshot) {
    bool repeated = false;
    {
        const events::Span span(events::Activity::Cache, "compare the snapshot");
        repeated = snapshot.repeats();
    }
    if (repeated) {
        events::emit(events::RunRepeated{});
    }
    return repeated;
}

}  // namespace

int build(const Settings& settings) {
    Keeping& keeping = leftAlone(std::make_unique<Keeping>());
    // A run with more messages than usual is done, not repeated; a dry run writes nothing; another
    // run takes another time.
    if (console::threshold() < console::level::kNormal || settings.dryRun || settings.why) {
        runBuild(settings, keeping);
        return 0;
    }
    keeping.directory = findProjectRoot(settings).directory;
    if (settings.summary || settings.see.aboutTargets()) {
        loadVisits(keeping.visits, keeping.directory);
        leftAlone(std::make_unique<Session>(runBuild(settings, keeping)));
        saveVisits(keeping.visits, keeping.directory);
        return 0;
    }
    Snapshot snapshot(keeping.directory, settings.arguments);
    const VisitKeeping use = visitKeeping(settings);
    if (!use.checks && repeats(snapshot)) {
        return 0;
    }
    if (!use.takes || events::listened()) {  // who listens wants to know of every visit
        snapshot.dropStanding();
    }
    if (const StandingVisits* standing = snapshot.standing()) {
        keeping.surroundings = standing->tree().surroundings;
    }
    if (snapshot.standing() == nullptr) {
        platform::expectLargeHeap();
    }
    loadVisits(keeping.visits, keeping.directory);
    snapshot.begin();
    keeping.snapshot = &snapshot;
    const Session& session = leftAlone(std::make_unique<Session>(runBuild(settings, keeping)));
    if (session.settings.summary) {  // the project asks for it
        saveVisits(keeping.visits, keeping.directory);
    } else {
        keepRun(keeping, session);
    }
    return 0;
}

}  // namespace Vesk::modes
