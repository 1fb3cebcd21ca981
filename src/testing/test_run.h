// Running tests side by side, when all that they need is built.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "driver/build_events.h"
#include "driver/target_build.h"
#include "driver/target_visit.h"
#include "schedule/schedule.h"
#include "testing/test_result.h"

namespace Vesk {

struct TestRunOptions {
    unsigned jobs = 1;         ///< how many commands run at once
    unsigned maxCommands = 0;  ///< of a test's list; 0: all
    unsigned repeat = 1;       ///< how often a test runs, as long as it passes
    bool onlyChanged = false;  ///< one that nothing has changed for since it passed is skipped
    BuildEvents* events = &noEvents();  ///< each run of a test is a step
};

/// A test's commands run as the commands of its target would, but read nothing from the standard
/// input, and are killed when TEST_TIMEOUT is over. A test that passed is recorded in the cache as
/// a target that was built. No test runs beside itself.
class TestRun {
  public:
    using Report = std::function<void(const TestResult&)>;

    /// `report` gets each result when it is known.
    TestRun(TestRunOptions options, Report report);
    ~TestRun();
    TestRun(const TestRun&) = delete;
    TestRun& operator=(const TestRun&) = delete;

    /// Adds a test. `visit` is null where something that it needs could not be built; it is of a
    /// driver that outlives this. Throws Interrupted.
    void add(const TargetLocation& location, std::unique_ptr<TargetVisit> visit);

    /// Shows the commands of all.
    void showCommands();

    /// Runs all, and returns when they have ended, or when those that run have after an
    /// interruption.
    void run();

    /// Of the tests that have ended, in the order in which they were added.
    std::vector<TestResult> results() const;

  private:
    class Test;

    void addTo(Schedule& schedule, Test& test);

    TestRunOptions options_;
    Report report_;
    std::vector<std::unique_ptr<Test>> tests_;
};

}  // namespace Vesk
