#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "app/build_summary.h"
#include "app/modes/modes.h"
#include "app/progress.h"
#include "app/session.h"
#include "app/unread_variables.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/interruption.h"
#include "driver/driver.h"
#include "platform/files.h"
#include "testing/junit_report.h"
#include "testing/test_report.h"
#include "testing/test_run.h"
#include "testing/test_selection.h"

namespace Vesk::modes {
namespace {

std::vector<TargetLocation> requestedTests(const Settings& settings, const Session& session) {
    TestScope scope{std::nullopt, settings.tests.pattern};
    if (session.request.words.target) {
        scope.from = session.catalog.locate(*session.request.words.target);
    }
    std::vector<TargetLocation> tests = findTests(session.catalog, scope);
    if (tests.empty()) {
        VeskException error(scope.pattern.empty()
                                ? std::string("There are no tests here.")
                                : fmt::format("No test fits '{}'.", scope.pattern));
        error.addNote(scope.pattern.empty()
                          ? "a target with TEST = \"yes\" is a test"
                          : "a pattern is for the target's name, or for 'unit::target'; vesk "
                            "--list-tests lists them");
        throw error;
    }
    return tests;
}

TestRunOptions runOptions(const Settings& settings, BuildEvents& events) {
    return {std::max(1U, settings.jobCount), settings.maxCommands, settings.tests.repeat,
            settings.tests.onlyChanged, &events};
}

void writeJunit(const std::string& path, const std::vector<TestResult>& results) {
    std::error_code error;
    if (!path.empty() &&
        !platform::writeWholeFile(platform::pathFromUtf8(path), junitReport(results),
                                  platform::Append::no, error)) {
        throw VeskException("Unable to write the test report '" + path + "': " + error.message() +
                            ".");
    }
}

/// What the tests need is built first, so that nothing holds them up.
void prepareTests(const std::vector<TargetLocation>& tests, Driver& driver, TestRun& run) {
    auto visits = driver.visitOnly(tests);
    for (std::size_t i = 0; i < tests.size(); ++i) {
        run.add(tests[i], std::move(visits[i]));
    }
}

int runTests(const Settings& settings, Session& session) {
    const auto began = std::chrono::steady_clock::now();
    const std::vector<TargetLocation> tests = requestedTests(settings, session);
    BuildSetting setting = buildSetting(settings, session);
    setting.options.keepGoing = true;  // one that cannot be built is no reason not to run others
    BuildSummary summary(settings.dryRun);
    std::optional<Progress> progress(std::in_place, settings, summary);
    setting.events = &*progress;
    Driver driver(std::move(setting));
    TestRun run(runOptions(settings, *progress), showTestLine);
    prepareTests(tests, driver, run);
    if (settings.dryRun) {
        run.showCommands();
        return run.results().empty() ? 0 : 1;  // those that could not be built
    }
    run.run();
    progress.reset();
    const std::vector<TestResult> results = run.results();
    if (settings.summary || summary.anyFailed()) {
        summary.print();
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - began;
    showTestSummary(results, time.count());
    writeJunit(settings.tests.junit, results);
    stopIfInterrupted();
    return std::ranges::all_of(results, &TestResult::succeeded) ? 0 : 1;
}

std::string descriptionOf(const TargetLocation& location) {
    const Assignment* description = location.target->context()->find("DESCRIPTION");
    return description != nullptr && description->value ? description->value->toString() : "";
}

}  // namespace

int test(const Settings& settings) {
    Session session = openSession(settings);
    reportUnreadVariables(session.settings.doubts, session);
    int status = 0;
    try {
        status = runTests(session.settings, session);
    } catch (...) {
        session.caches.save();  // what was built before the failure is not built again
        throw;
    }
    session.caches.save();
    return status;
}

int listTests(const Settings& settings) {
    Settings looking = settings;
    looking.dryRun = true;  // takes no lock
    const Session session = openSession(looking);
    const std::vector<TargetLocation> tests = requestedTests(settings, session);
    std::size_t width = 0;
    const auto nameOf = [](const TargetLocation& each) {
        return each.unit->name + "::" + each.target->name;
    };
    for (const TargetLocation& each : tests) {
        width = std::max(width, nameOf(each).size());
    }
    for (const TargetLocation& each : tests) {
        const std::string description = descriptionOf(each);
        if (description.empty()) {
            console::normal("{}", nameOf(each));
        } else {
            console::writeColumns(console::level::kNormal, console::colour::kNormal,
                                  fmt::format("{:{}}  ", nameOf(each), width),
                                  {console::colour::kSecondColumn, description});
        }
    }
    return 0;
}

}  // namespace Vesk::modes
