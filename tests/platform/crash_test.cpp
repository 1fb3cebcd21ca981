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

/// The lines of a stack trace: their number is the one that the heading tells.
void expectStackTrace(const std::string& report) {
    const std::size_t heading = report.find("Stack trace (");
    ASSERT_NE(heading, std::string::npos) << report;
    std::istringstream lines(report.substr(heading));
    std::string line;
    std::getline(lines, line);
    const int frames = std::stoi(line.substr(13));
    EXPECT_EQ(line, "Stack trace (" + std::to_string(frames) + " frames):");
    EXPECT_GT(frames, 0);
    EXPECT_LE(frames, kMaxStackFrames);
    for (int i = 0; i < frames; ++i) {
        ASSERT_TRUE(std::getline(lines, line)) << report;
        const std::string start = "  [" + std::to_string(i) + "] 0x";
        EXPECT_EQ(line.substr(0, start.size()), start);
        EXPECT_EQ(line.size(), start.size() + 16) << line;
    }
}

TEST(CrashHandler, ReportsAnAccessViolation) {
    const Crash crash = crashBy("access");
    const std::string what = kWindows ? "Exception caught! Code: 0xC0000005\n"
                                      : "Exception caught! Signal 11 (SIGSEGV)\n";
    EXPECT_THAT(crash.report,
                testing::StartsWith(what + "ACCESS VIOLATION at address: 0x0000000000000040\n"));
    expectStackTrace(crash.report);
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
