#include "run/run_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/collector.h"
#include "base/console.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/support.h"
#include "platform/system.h"
#include "support/console_capture.h"

namespace Vesk {
namespace {

using platform::kWindows;
using test::TempDir;
using testing::HasSubstr;

TEST(RunCommand, SearchDirectoriesComeFirst) {
    const TempDir dir;
    // A program of this name exists nowhere else.
    const std::string name = "vesk_only_here";
    std::filesystem::create_directories(dir / "bin ü");
    std::filesystem::copy_file(test::childProgram(),
                               dir / ("bin ü/" + name + (kWindows ? ".exe" : "")));
    console::setThreshold(console::level::kError);
    Command command;
    command.command = name + " env out";
    command.workingDirectory = dir.path();
    EXPECT_NE(runCommand(command), 0);

    command.searchDirectories = {dir / "bin ü", dir / "second"};
    EXPECT_EQ(runCommand(command), 0);
    const std::string expected = "PATH=" + dir.text("bin ü") + platform::kPathListSeparator +
                                 dir.text("second") + platform::kPathListSeparator +
                                 platform::environmentVariable("PATH").value();
    const std::string seen = "\n" + test::contentOf(dir / "out");
    EXPECT_NE(seen.find("\n" + expected + "\n"), std::string::npos) << seen;
    console::setThreshold(console::kDefaultThreshold);
}

Command commandOf(std::string text) {
    Command command;
    command.command = std::move(text);
    return command;
}

/// What a command writes, and after it the status; the echo of the command is left out.
std::string collected(const Command& command) {
    console::setThreshold(console::level::kError);
    std::string transcript;
    std::int32_t status = 0;
    {
        console::Collector collector("");
        status = runCommand(command);
        transcript = collector.take();
    }
    console::setThreshold(console::kDefaultThreshold);
    test::ConsoleCapture capture;
    console::repeat(transcript);
    return capture.text() + "status " + std::to_string(status);
}

TEST(RunCommand, CollectsAllThatTheCommandWrites) {
    std::string lines = collected(commandOf(test::childCommand({"fill", "20000"})));
    std::erase_if(lines, [](char c) { return c == '\r'; });
    EXPECT_GT(lines.size(), 20000U * 64);
    EXPECT_THAT(lines, HasSubstr("19999............"));
    const std::string both =
        collected(commandOf(test::childCommand({"print", "to output", "to errors"})));
    EXPECT_THAT(both, HasSubstr("to output"));
    EXPECT_THAT(both, HasSubstr("to errors"));
    EXPECT_THAT(both, HasSubstr("status 0"));
}

TEST(RunCommand, WaitsForNobodyWhomTheCommandLeavesBehind) {
    if (kWindows) {
        GTEST_SKIP() << "the shell's own syntax";
    }
    const TempDir dir;
    test::write(dir / "held", "");
    const std::string held = "'" + dir.text("held") + "'";
    const std::string output =
        collected(commandOf("(while [ -e " + held + " ]; do sleep 0.01; done) & echo done"));
    EXPECT_THAT(output, HasSubstr("done\n"));
}

/// A command that is started without a shell behaves as one that is not.
TEST(RunCommand, DoesWhatTheShellWouldDo) {
    if (kWindows) {
        GTEST_SKIP() << "everything goes through the interpreter there";
    }
    const TempDir dir;
    test::write(dir / "no interpreter", "echo from a script\n");
    std::filesystem::permissions(dir / "no interpreter", std::filesystem::perms::owner_all);
    for (const char* text : {"uname -s",
                             "/bin/echo 'a  b' \"c  d\" e'f'\"g\" '' h=i",
                             "  /bin/echo   x  ",
                             "pwd",
                             "/bin/sh -c 'exit 3'",

                             "no_such_program -x",
                             "./no_such",
                             "/etc/passwd",
                             "'./no interpreter'",
                             "./no\\ interpreter",
                             "A=1 env",
                             "echo $HOME",
                             "/bin/echo ~ # x",
                             "/bin/echo *",
                             "/bin/echo {a,b}",
                             "/bin/echo \"$((1 + 2))\"",
                             "cat < /dev/null",
                             "exit 4",
                             "false",
                             "/bin/false",
                             "/bin/echo '",
                             "''",
                             "if",
                             "/bin/echo größe",
                             "/bin/echo a\tb",
                             "/bin/echo a\nexit 5",
                             "printenv PWD"}) {
        Command command = commandOf(text);
        command.workingDirectory = dir.path();
        Command inShell = command;
        inShell.command += " #";  // a comment is the shell's business
        EXPECT_EQ(collected(command), collected(inShell)) << text;
    }
}

}  // namespace
}  // namespace Vesk
