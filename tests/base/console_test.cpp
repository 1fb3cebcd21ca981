#include "base/console.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "platform/environment.h"

namespace Vesk {
namespace {

/// What one program run writes; the console decides about colours once a run.
struct Run {
    const char* title;
    std::optional<std::string> noColor;
    std::function<void()> act;
    std::string output;
    std::string errors;
};

/// In the child: ends it with success only if exactly the expected bytes were written.
[[noreturn]] void actAndCompare(const Run& run) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run.act();
    const std::string output = testing::internal::GetCapturedStdout();
    const std::string errors = testing::internal::GetCapturedStderr();
    const bool same = output == run.output && errors == run.errors;
    if (!same) {
        std::fprintf(stderr, "output: %s\nerrors: %s\n", testing::PrintToString(output).c_str(),
                     testing::PrintToString(errors).c_str());
    }
    std::fflush(stderr);
    std::_Exit(same ? 0 : 1);
}

void expectBytes(const Run& run) {
    SCOPED_TRACE(run.title);
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process with the environment of now
    if (run.noColor) {
        platform::setEnvironmentVariable("NO_COLOR", *run.noColor);
    } else {
        platform::removeEnvironmentVariable("NO_COLOR");
    }
    EXPECT_EXIT(actAndCompare(run), testing::ExitedWithCode(0), "");
}

void writeEveryLevel() {
    for (int level = 0; level <= 7; ++level) {
        console::message(level, 30 + level, "{}\n", level);
    }
    console::flush();
}

TEST(ConsoleDeathTest, LevelsChooseTheStreamAndTheThresholdWhatIsWritten) {
    expectBytes({"default threshold, colours", std::nullopt, writeEveryLevel,
                 "\x1b[38;5;35m5\x1b[0m\n", "\x1b[38;5;36m6\x1b[0m\n\x1b[38;5;37m7\x1b[0m\n"});
    expectBytes({"NO_COLOR empty", "",
                 [] {
                     console::normal("a");
                     console::flush();
                 },
                 "\x1b[38;5;37ma\x1b[0m\n", ""});
    expectBytes({"NO_COLOR set", "1",
                 [] {
                     console::setThreshold(3);
                     writeEveryLevel();
                 },
                 "3\n4\n5\n", "6\n7\n"});
    expectBytes({"everything", "1",
                 [] {
                     console::setThreshold(0);
                     writeEveryLevel();
                 },
                 "0\n1\n2\n3\n4\n5\n", "6\n7\n"});
    expectBytes({"nothing", "1",
                 [] {
                     console::setThreshold(8);
                     writeEveryLevel();
                 },
                 "", ""});
}

TEST(ConsoleDeathTest, OneLineOneLineEnd) {
    expectBytes({"line ends", "1",
                 [] {
                     console::normal("a");
                     console::normal("b\n");
                     console::normal("c\n\n");
                     console::normal("");
                     console::normal("{} {}", "{}", "\xC3\xA4");
                     console::flush();
                 },
                 "a\nb\nc\n\n\n{} \xC3\xA4\n", ""});
    expectBytes({"kinds", std::nullopt,
                 [] {
                     console::setThreshold(console::level::kTrace);
                     console::trace("t");
                     console::warning("w");
                     console::error("e");
                 },
                 "\x1b[38;5;35mt\x1b[0m\n", "\x1b[38;5;33mw\x1b[0m\n\x1b[38;5;31me\x1b[0m\n"});
    expectBytes({"prefix", std::nullopt,
                 [] {
                     console::setPrefix("[u::t] ");
                     console::normal("a{}b", console::coloured(32, "x"));
                     console::setPrefix("");
                     console::normal("c");
                     console::flush();
                 },
                 "\x1b[38;5;37m[u::t] a\x1b[38;5;32mxb\x1b[0m\n\x1b[38;5;37mc\x1b[0m\n", ""});
    expectBytes({"part without colours", "1",
                 [] {
                     console::normal("a{}b", console::coloured(32, "x"));
                     console::flush();
                 },
                 "axb\n", ""});
}

TEST(ConsoleDeathTest, OutputIsBufferedUntilAnErrorOrAFlushFollows) {
    expectBytes({"buffered", "1", [] { console::normal("a"); }, "", ""});
    expectBytes({"an error goes after it", "1",
                 [] {
                     console::normal("a");
                     console::error("e");
                     console::normal("b");
                 },
                 "a\n", "e\n"});
    expectBytes({"a suppressed error flushes nothing", "1",
                 [] {
                     console::normal("a");
                     console::setThreshold(8);
                     console::error("e");
                 },
                 "", ""});
    const std::string kilobyte(1023, 'x');
    std::string expected;
    for (int i = 0; i < 32; ++i) {
        expected += kilobyte + "\n";
    }
    expectBytes({"a full buffer is handed over", "1",
                 [&] {
                     for (int i = 0; i < 33; ++i) {
                         console::normal("{}", kilobyte);
                     }
                 },
                 expected, ""});
}

}  // namespace
}  // namespace Vesk
