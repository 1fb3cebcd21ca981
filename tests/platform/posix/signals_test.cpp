// Signals, seen from one process. What an interruption does to a whole build is looked at by the
// whole-program tests.
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>

#include "platform/console.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/process.h"
#include "platform/support.h"

namespace Vesk::platform {
namespace {

TEST(Signals, AKilledChildGives128AndTheSignal) {
    prepareConsole();  // ignores SIGPIPE, which the child must not inherit
    for (const int signal : {SIGTERM, SIGKILL, SIGPIPE}) {
        const ProcessResult result =
            runProcess(test::childRequest({"raise", std::to_string(signal)}));
        EXPECT_TRUE(result.started);
        EXPECT_EQ(result.status, 128 + signal);
    }
    std::signal(SIGPIPE, SIG_DFL);
}

[[noreturn]] void runAfterARequestToEnd() {
    installInterruptHandler();
    std::raise(SIGTERM);
    const bool started = runProcess(test::childRequest({"exit", "0"})).started;
    std::_Exit(!started && interruptSignal() == SIGTERM ? 0 : 1);
}

TEST(SignalsDeathTest, AfterARequestToEndNothingIsStarted) {
    EXPECT_EXIT(runAfterARequestToEnd(), testing::ExitedWithCode(0), "");
}

TEST(WholeFile, NoticesAFullDisk) {
    std::error_code error;
    EXPECT_FALSE(writeWholeFile("/dev/full", "x", Append::no, error));
    EXPECT_EQ(error, std::errc::no_space_on_device);
}

}  // namespace
}  // namespace Vesk::platform
