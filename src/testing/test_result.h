// What became of a test.
#pragma once

#include <cstdint>
#include <string>

namespace Vesk {

enum class TestOutcome : std::uint8_t {
    Passed,
    Failed,
    TimedOut,
    Skipped,   ///< nothing has changed since it passed
    NotBuilt,  ///< what it needs could not be built
};

struct TestResult {
    std::string unit;
    std::string target;
    TestOutcome outcome = TestOutcome::NotBuilt;
    double seconds = 0;      ///< of all its runs
    std::uint32_t runs = 0;  ///< the last one included
    std::string message;     ///< what went wrong, in a line; empty when nothing did
    std::string transcript;  ///< what its last run wrote, for console::repeat

    std::string name() const { return unit + "::" + target; }
    bool succeeded() const noexcept {
        return outcome == TestOutcome::Passed || outcome == TestOutcome::Skipped;
    }
};

}  // namespace Vesk
