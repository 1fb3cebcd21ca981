// Results for servers that read JUnit's XML.
#pragma once

#include <string>
#include <vector>

#include "testing/test_result.h"

namespace Vesk {

/// A suite for each unit, in the order of the results. Well-formed whatever tests have written:
/// escape sequences of terminals are left out, what XML cannot hold becomes U+FFFD.
std::string junitReport(const std::vector<TestResult>& results);

}  // namespace Vesk
