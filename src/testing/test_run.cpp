#include "testing/test_run.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <fmt/format.h>
#include <map>
#include <utility>

#include "base/collector.h"
#include "base/console.h"
#include "base/report.h"
#include "platform/interrupt.h"

namespace Vesk {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kTimeoutVariable = "TEST_TIMEOUT";
constexpr double kDefaultTimeout = 300;
constexpr double kLongestTimeout = 1e9;  // seconds; a clock's range has an end

/// In seconds; 0: none.
double timeoutOf(const Context& context) {
    const std::string text = context.textOf(kTimeoutVariable).value_or("");
    if (text.empty()) {
        return kDefaultTimeout;
    }
    double seconds = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || rest != end || !(seconds >= 0)) {
        throw VeskException(
            fmt::format("Variable '{}' is \"{}\"; write a number of seconds, or 0 for no limit.",
                        kTimeoutVariable, text));
    }
    return std::min(seconds, kLongestTimeout);
}

/// What compiles or links makes files for others, and is no test itself.
void requireCommands(const TargetBuild& build, const std::string& name) {
    for (const Recipe& recipe : build.recipes()) {
        if (recipe.role != RecipeRole::Any) {
            VeskException error(fmt::format("'{}' makes a program; TEST runs commands.", name));
            error.addNote(
                "leave TEST out there, and let another target run the program: run_it: it { "
                "cmdline = \"${it.OUTPUT}\" TEST = \"yes\" }");
            throw error;
        }
    }
}

}  // namespace

/// Its functions are called on the thread that owns the schedule, all but `work`.
class TestRun::Test {
  public:
    Test(const TestRunOptions& options, const Report& report, const TargetLocation& location)
        : options_(options), report_(report) {
        result_.unit = location.unit->name;
        result_.target = location.target->name;
    }

    bool ended() const noexcept { return ended_; }
    const TestResult& result() const noexcept { return result_; }
    TargetBuild& build() noexcept { return *build_; }

    void prepare(TargetVisit* visit);
    ScheduleNode node();
    void showCommands() const;

  private:
    struct Step {
        std::vector<std::size_t> recipes;
        std::unique_ptr<Stage> stage;
    };

    Turn ask();
    bool work();
    bool endRun(NodeEnd end);
    bool mustRun();
    void makeSteps();
    void takeFailure(const Job& job);
    void takeResults();
    void fail(TestOutcome outcome, std::string message);
    void complete();
    void finish();

    template <class Action>
    bool guarded(Action action);

    const TestRunOptions& options_;
    const Report& report_;
    TestResult result_;
    std::unique_ptr<TargetBuild> build_;  ///< null when the test has ended
    double timeout_ = 0;
    std::vector<Step> steps_;
    bool ran_ = false;
    bool ended_ = false;
};

/// What is thrown is reported, and the test cannot be run.
template <class Action>
bool TestRun::Test::guarded(Action action) {
    const console::PrefixScope scope("[" + result_.name() + "] ");
    try {
        action();
        return true;
    } catch (const VeskException& error) {
        reportError(error);
        fail(TestOutcome::NotBuilt, error.text());
    } catch (const std::exception& error) {
        reportError(error);
        fail(TestOutcome::NotBuilt, error.what());
    }
    return false;
}

void TestRun::Test::prepare(TargetVisit* visit) {
    if (visit == nullptr) {
        fail(TestOutcome::NotBuilt, "what it needs could not be built");
        finish();
        return;
    }
    const auto make = [&] {
        build_ = visit->prepareBuild(options_.onlyChanged ? Runs::AsNeeded : Runs::Again);
        requireCommands(*build_, result_.name());
        timeout_ = timeoutOf(*build_->subject().context);
    };
    if (!guarded(make)) {
        finish();
    }
}

void TestRun::Test::showCommands() const {
    const console::PrefixScope scope(build_->prefix());
    build_->buildNow();
}

ScheduleNode TestRun::Test::node() {
    ScheduleNode node;
    node.owner = result_.name();
    CacheStep& cache = build_->cache();
    for (const CacheRequest::Part& part : cache.request().parts) {
        node.reads.insert(node.reads.end(), part.reads.begin(), part.reads.end());
        node.makes.insert(node.makes.end(), part.writes.begin(), part.writes.end());
    }
    std::map<std::uint32_t, unsigned> sizes;
    std::vector<std::size_t> all;
    for (const Recipe& recipe : build_->recipes()) {
        node.slots = std::max(node.slots, ++sizes[recipe.stage]);
        all.push_back(all.size());
    }
    node.slots =
        options_.maxCommands == 0 ? node.slots : std::min(node.slots, options_.maxCommands);
    // One after another they run in their order, else the longest first.
    node.seconds = options_.jobs == 1 ? 1 : cache.secondsOf(all, 1.0);
    node.ask = [this] { return ask(); };
    node.work = [this] { return work(); };
    node.end = [this](NodeEnd end) { return endRun(end); };
    return node;
}

/// Asks the cache before the first run. False for a test that is skipped.
bool TestRun::Test::mustRun() {
    CacheStep& cache = build_->cache();
    if (!cache.asked()) {
        cache.ask();
    }
    if (!cache.mustBuild()) {
        result_.outcome = TestOutcome::Skipped;
        result_.message = "nothing has changed since it passed";
    }
    return cache.mustBuild();
}

void TestRun::Test::makeSteps() {
    std::map<std::uint32_t, std::vector<std::size_t>> stages;
    for (std::size_t i = 0; i < build_->recipes().size(); ++i) {
        build_->cache().stale(i);  // the files that it reads are looked at
        stages[build_->recipes()[i].stage].push_back(i);
    }
    steps_.clear();
    for (auto& [number, recipes] : stages) {
        auto stage = build_->stageFor(recipes);
        steps_.push_back({std::move(recipes), std::move(stage)});
    }
}

Turn TestRun::Test::ask() {
    bool runs = false;
    const bool asked = guarded([&] {
        runs = mustRun();
        if (runs) {
            makeSteps();
        }
    });
    if (!asked) {
        return Turn::Failed;
    }
    ran_ = runs;
    result_.runs += runs ? 1 : 0;
    if (runs) {
        options_.events->stepsBegan(result_.name(), 1);
    }
    return runs ? Turn::Run : Turn::Nothing;
}

bool TestRun::Test::work() {
    const auto began = Clock::now();
    // Without a limit, too, a test is a process group that can be ended as a whole.
    const std::chrono::duration<double> limit(timeout_ > 0 ? timeout_ : kLongestTimeout);
    const auto deadline = began + std::chrono::duration_cast<Clock::duration>(limit);
    bool passed = true;
    for (Step& step : steps_) {
        for (const auto& job : step.stage->jobs()) {
            for (Command& command : job->commands) {
                command.deadline = deadline;
            }
        }
        step.stage->runCollected(build_->prefix(), options_.maxCommands);
        passed = std::ranges::all_of(step.stage->jobs(),
                                     [](const auto& job) { return job->succeeded.load(); });
        if (!passed) {
            break;
        }
    }
    result_.seconds += std::chrono::duration<double>(Clock::now() - began).count();
    return passed;
}

void TestRun::Test::fail(TestOutcome outcome, std::string message) {
    result_.outcome = outcome;
    result_.message = std::move(message);
}

void TestRun::Test::takeFailure(const Job& job) {
    if (job.timedOut) {
        fail(TestOutcome::TimedOut,
             fmt::format("It ran longer than {:g} s and was killed.", timeout_));
    } else if (!job.startFailure.empty()) {
        fail(TestOutcome::Failed, job.startFailure);
    } else {
        fail(TestOutcome::Failed,
             fmt::format("Command ended with status {}: {}", job.result, job.failedCommand));
    }
}

/// What the last run wrote, what went wrong, and what the cache is told of it.
void TestRun::Test::takeResults() {
    result_.transcript.clear();
    for (const Step& step : steps_) {
        for (std::size_t i = 0; i < step.recipes.size(); ++i) {
            const Job& job = *step.stage->jobs()[i];
            result_.transcript += job.transcript;
            if (job.succeeded) {
                build_->cache().ran(step.recipes[i], job.seconds);
            } else if (job.result != 0 && result_.message.empty()) {
                takeFailure(job);
            }
        }
    }
    steps_.clear();
}

void TestRun::Test::complete() {
    if (guarded([this] { build_->complete(); })) {
        result_.outcome = TestOutcome::Passed;
    }
}

void TestRun::Test::finish() {
    build_.reset();
    ended_ = true;
    report_(result_);
}

bool TestRun::Test::endRun(NodeEnd end) {
    if (ran_) {
        ran_ = false;
        options_.events->stepsEnded(result_.name(), 1);
        takeResults();
    } else {
        options_.events->dropped(1);
    }
    if (platform::interruptSignal() != 0) {
        return false;  // what it would have shown is not known
    }
    if (end == NodeEnd::Skipped) {
        fail(TestOutcome::NotBuilt, "a test that makes a file of its did not pass");
    }
    const bool skipped = result_.outcome == TestOutcome::Skipped;
    if (!result_.message.empty()) {
        build_->cache().keepProgress();
        finish();
    } else if (result_.runs == options_.repeat) {
        complete();
        finish();
    }
    return skipped || end == NodeEnd::Done;
}

TestRun::TestRun(TestRunOptions options, Report report)
    : options_(options), report_(std::move(report)) {}

TestRun::~TestRun() = default;

void TestRun::add(const TargetLocation& location, std::unique_ptr<TargetVisit> visit) {
    tests_.push_back(std::make_unique<Test>(options_, report_, location));
    tests_.back()->prepare(visit.get());
}

void TestRun::showCommands() {
    for (const auto& test : tests_) {
        if (!test->ended()) {
            test->showCommands();
        }
    }
}

void TestRun::run() {
    for (unsigned round = 0; round < options_.repeat; ++round) {
        Schedule schedule({
            .limit = options_.jobs,
            .mayStart = [] { return platform::interruptSignal() == 0; },
            .beforeWaiting =
                [this](auto longest) { return options_.events->beforeWaiting(longest); },
        });
        for (const auto& test : tests_) {
            if (!test->ended()) {
                options_.events->expected(1);
                schedule.add(test->node());
            }
        }
        if (!schedule.waitForAll() || schedule.stopped()) {
            schedule.abandon();
            return;
        }
    }
}

std::vector<TestResult> TestRun::results() const {
    std::vector<TestResult> results;
    for (const auto& test : tests_) {
        if (test->ended()) {
            results.push_back(test->result());
        }
    }
    return results;
}

}  // namespace Vesk
