// What the console says of tests.
#pragma once

#include <vector>

#include "testing/test_result.h"

namespace Vesk {

/// A line: "passed      0.12 s  main::parser". At the detail level what it wrote stands above it.
void showTestLine(const TestResult& result);

/// When all have ended: what those that failed wrote, how many did what, and an error that names
/// those that did not succeed. `seconds` is how long all of it took.
void showTestSummary(const std::vector<TestResult>& results, double seconds);

}  // namespace Vesk
