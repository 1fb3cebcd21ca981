#include "platform/crash.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "platform/process.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk::platform {
namespace {

struct Crash {
    std::string report;
    int status = 0;
};

Crash crashBy(const std::string& how) {
    Crash crash;
    crash.report = captureShellOutput(test::childCommand({"crash", how}) + " 2>&1", &crash.status)
                       .value_or("");
    std::erase(crash.report, '\r');
    return crash;
}

TEST(CrashHandler, ReportsAnAccessViolation) {
    const Crash crash = crashBy("access");
    const std::string what = kWindows ? "Exception caught! Code: 0xC0000005\n"
                                      : "Exception caught! Signal 11 (SIGSEGV)\n";
    EXPECT_THAT(crash.report,
                testing::StartsWith(what + "ACCESS VIOLATION at address: 0x0000000000000040\n"));
    // The heading tells the number of the lines that follow.
    std::istringstream trace(crash.report.substr(crash.report.find("Stack trace (")));
    std::string line;
    ASSERT_TRUE(std::getline(trace, line));
    const int frames = std::stoi(line.substr(13));
    EXPECT_EQ(line, "Stack trace (" + std::to_string(frames) + " frames):");
    for (int i = 0; i < frames; ++i) {
        ASSERT_TRUE(std::getline(trace, line)) << crash.report;
        EXPECT_THAT(line, testing::StartsWith("  [" + std::to_string(i) + "] 0x"));
    }
    EXPECT_GT(frames, 0);
    EXPECT_EQ(crash.status, kWindows ? static_cast<int>(0xC0000005) : 128 + SIGSEGV);
}

TEST(CrashHandler, ReportsAStackOverflow) {
    const Crash crash = crashBy("overflow");
    EXPECT_THAT(crash.report,
                testing::HasSubstr(kWindows ? "Exception caught! Code: 0xC00000FD"
                                            : "Exception caught! Signal 11 (SIGSEGV)"));
    EXPECT_EQ(crash.status, kWindows ? static_cast<int>(0xC00000FD) : 128 + SIGSEGV);
}

}  // namespace
}  // namespace Vesk::platform
