#include "testing/test_report.h"

#include <algorithm>
#include <fmt/format.h>
#include <string>

#include "base/collector.h"
#include "base/console.h"
#include "base/text.h"

namespace Vesk {
namespace {

struct Words {
    const char* outcome;
    int colour;
};

Words wordsOf(TestOutcome outcome) noexcept {
    switch (outcome) {
        case TestOutcome::Passed:
            return {"passed", console::colour::kSecondColumn};
        case TestOutcome::Failed:
            return {"failed", console::colour::kError};
        case TestOutcome::TimedOut:
            return {"timed out", console::colour::kError};
        case TestOutcome::Skipped:
            return {"skipped", console::colour::kTrace};
        case TestOutcome::NotBuilt:
            break;
    }
    return {"not built", console::colour::kError};
}

std::string runsOf(const TestResult& result) {
    if (result.runs <= 1) {
        return {};
    }
    return result.succeeded() ? fmt::format(" ({} runs)", result.runs)
                              : fmt::format(" (run {})", result.runs);
}

std::string lineOf(const TestResult& result) {
    const std::string time = result.runs == 0 ? "" : fmt::format("{:.2f} s", result.seconds);
    const std::string why =
        result.outcome == TestOutcome::Skipped ? " (" + result.message + ")" : "";
    return fmt::format("{:<9} {:>9}  {}{}{}", wordsOf(result.outcome).outcome, time, result.name(),
                       runsOf(result), why);
}

/// "2 passed, 1 failed".
std::string countsOf(const std::vector<TestResult>& results) {
    std::vector<std::string> counts;
    for (const TestOutcome outcome :
         {TestOutcome::Passed, TestOutcome::Failed, TestOutcome::TimedOut, TestOutcome::Skipped,
          TestOutcome::NotBuilt}) {
        const auto count = std::ranges::count(results, outcome, &TestResult::outcome);
        if (count > 0) {
            counts.push_back(fmt::format("{} {}", count, wordsOf(outcome).outcome));
        }
    }
    return joined(counts, ", ");
}

void showOutputs(const std::vector<TestResult>& results) {
    for (const TestResult& result : results) {
        if (!result.succeeded() && result.runs > 0) {
            console::message(console::level::kNormal, console::colour::kError, "--- {}: {}",
                             result.name(), result.message);
            console::repeat(result.transcript);
        }
    }
}

}  // namespace

void showTestLine(const TestResult& result) {
    if (console::enabled(console::level::kDetail)) {
        console::repeat(result.transcript);
    }
    console::write(console::level::kNormal, wordsOf(result.outcome).colour, lineOf(result));
    console::flush();  // the next one may take its time
}

void showTestSummary(const std::vector<TestResult>& results, double seconds) {
    showOutputs(results);
    console::normal("{} test{}{}{} ({:.2f} s)", results.size(), results.size() == 1 ? "" : "s",
                    results.empty() ? "" : ": ", countsOf(results), seconds);
    std::vector<std::string> notes;
    for (const TestResult& result : results) {
        if (!result.succeeded()) {
            notes.push_back(fmt::format("{}: {}", result.name(), result.message));
        }
    }
    if (!notes.empty()) {
        console::write(console::level::kError, console::colour::kError,
                       fmt::format("{} of {} tests did not pass.", notes.size(), results.size()),
                       notes);
    }
}

}  // namespace Vesk
