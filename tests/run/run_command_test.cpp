#include "build/run/run_command.h"

#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "base/console.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk {
namespace {

using platform::kWindows;
using test::childCommand;
using test::contentOf;
using test::TempDir;
using testing::HasSubstr;
using testing::StartsWith;

class RunCommand : public testing::Test {
  protected:
    // The echo is looked at where it matters and kept out of the test's own output elsewhere.
    void SetUp() override { console::setThreshold(console::level::kError); }
    void TearDown() override { console::setThreshold(console::kDefaultThreshold); }

    static Recipe recipeFor(std::string command) {
        Recipe recipe;
        recipe.command = std::move(command);
        return recipe;
    }
};

TEST_F(RunCommand, ReturnsTheExitCode) {
    std::vector<int> codes{0, 1, 255};
    if (kWindows) {
        codes.insert(codes.end(), {300, -1});
    }
    for (const int code : codes) {
        std::string failure = "untouched";
        EXPECT_EQ(runCommand(recipeFor(childCommand({"exit", std::to_string(code)})), &failure),
                  code);
        EXPECT_EQ(failure, "");
    }
    EXPECT_EQ(runCommand(recipeFor("exit 9")), 9) << "the interpreter's own command";
}

TEST_F(RunCommand, EchoesBeforeTheChildWrites) {
    console::setThreshold(console::kDefaultThreshold);
    const std::string command = childCommand({"print", "from the child", ""});
    testing::internal::CaptureStdout();
    EXPECT_EQ(runCommand(recipeFor(command)), 0);
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_THAT(output, HasSubstr(command));
    EXPECT_TRUE(output.ends_with("from the child")) << output;
}

TEST_F(RunCommand, RunsInTheWorkingDirectory) {
    const TempDir dir;
    Recipe recipe = recipeFor(childCommand({"cwd", "out"}));
    recipe.workingDirectory = dir.path();
    EXPECT_EQ(runCommand(recipe), 0);
    EXPECT_TRUE(
        std::filesystem::equivalent(platform::pathFromUtf8(contentOf(dir / "out")), dir.path()));
}

TEST_F(RunCommand, QuotesAndRedirectionsReachTheInterpreter) {
    const TempDir dir;
    Recipe recipe = recipeFor(childCommand({"args", "out file", "a b", "größe"}) + " & " +
                              childCommand({"print", "x", ""}) + " > \"red irect\"" +
                              (kWindows ? "" : " & wait"));
    recipe.workingDirectory = dir.path();
    EXPECT_EQ(runCommand(recipe), 0);
    EXPECT_EQ(contentOf(dir / "out file"), std::string("a b\0größe\0", 12));
    EXPECT_EQ(contentOf(dir / "red irect"), "x");
}

TEST_F(RunCommand, SearchDirectoriesComeFirst) {
    const TempDir dir;
    // A program of this name exists nowhere else.
    const std::string name = "vesk_only_here";
    std::filesystem::create_directories(dir / "bin ü");
    std::filesystem::copy_file(test::childProgram(),
                               dir / ("bin ü/" + name + (kWindows ? ".exe" : "")));
    Recipe recipe = recipeFor(name + " env out");
    recipe.workingDirectory = dir.path();
    EXPECT_NE(runCommand(recipe), 0);

    recipe.searchDirectories = {dir / "bin ü", dir / "second"};
    EXPECT_EQ(runCommand(recipe), 0);
    const std::string expected = "PATH=" + dir.text("bin ü") + platform::kPathListSeparator +
                                 dir.text("second") + platform::kPathListSeparator +
                                 platform::environmentVariable("PATH").value();
    EXPECT_THAT("\n" + contentOf(dir / "out"), HasSubstr("\n" + expected + "\n"));
}

TEST_F(RunCommand, RunsSeveralAtOnce) {
    const TempDir dir;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            Recipe recipe = recipeFor(
                childCommand({"args", dir.text("out" + std::to_string(i)), std::to_string(i)}));
            recipe.searchDirectories = {dir.path()};
            EXPECT_EQ(runCommand(recipe), 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(contentOf(dir / ("out" + std::to_string(i))), std::to_string(i) + '\0');
    }
}

TEST_F(RunCommand, ExplainsABadWorkingDirectory) {
    const TempDir dir;
    test::write(dir / "file", "x");
    Recipe recipe = recipeFor("exit 0");
    std::string failure;
    recipe.workingDirectory = dir / "missing";
    EXPECT_NE(runCommand(recipe, &failure), 0);
    EXPECT_EQ(failure, "Working directory '" + dir.text("missing") + "' does not exist.");
    recipe.workingDirectory = dir / "file";
    EXPECT_NE(runCommand(recipe, &failure), 0);
    EXPECT_EQ(failure, "Working directory '" + dir.text("file") + "' is not a directory.");
}

// Each system can do without one of the two: PowerShell is optional on POSIX, and Windows is told
// by a variable where its command interpreter is.
TEST_F(RunCommand, ExplainsAMissingInterpreter) {
    const std::string variable = kWindows ? "COMSPEC" : "PATH";
    const std::string before = platform::environmentVariable(variable).value_or("");
    platform::setEnvironmentVariable(variable, kWindows ? "C:\\no such\\shell.exe" : "/nowhere");
    Recipe recipe = recipeFor("exit 0");
    recipe.shell = kWindows ? shell::kInterpreter : shell::kPowershell;
    std::string failure;
    EXPECT_NE(runCommand(recipe, &failure), 0);
    platform::setEnvironmentVariable(variable, before);
    if (kWindows) {
        EXPECT_THAT(failure, StartsWith("Command interpreter 'C:\\no such\\shell.exe' could not be "
                                        "started: "));
    } else {
        EXPECT_EQ(failure,
                  "PowerShell 'pwsh' could not be started: No such file or directory (code 2). Is "
                  "it installed and in PATH?");
    }
}

TEST_F(RunCommand, PowershellGetsTheWholeTextAsOneArgument) {
    const TempDir dir;
    // The test child as a stand-in: it writes down what it is given.
    std::filesystem::copy_file(test::childProgram(), dir / (kWindows ? "powershell.exe" : "pwsh"));
    const auto directoryBefore = std::filesystem::current_path();
    const std::string pathBefore = platform::environmentVariable("PATH").value();
    // Windows looks into the current directory before the system's own, POSIX into PATH.
    std::filesystem::current_path(dir.path());
    platform::setEnvironmentVariable(
        "PATH", platform::pathToUtf8(dir.path()) + platform::kPathListSeparator + pathBefore);
    platform::setEnvironmentVariable("VESK_TEST_OUT", dir.text("out"));
    Recipe recipe = recipeFor("Write-Output \"a  b\"; 'C:\\x\\'");
    recipe.shell = shell::kPowershell;
    EXPECT_EQ(runCommand(recipe), 5);
    std::filesystem::current_path(directoryBefore);
    platform::setEnvironmentVariable("PATH", pathBefore);
    platform::removeEnvironmentVariable("VESK_TEST_OUT");
    EXPECT_EQ(contentOf(dir / "out"),
              "-NonInteractive|-ExecutionPolicy|Bypass|-Command|" + recipe.command + "|");
}

TEST_F(RunCommand, RefusesWhatTheInterpreterCannotTake) {
    const TempDir dir;
    const std::string start = childCommand({"args", dir.text("out")}) + " ";
    std::string failure;
    if (kWindows) {
        EXPECT_NE(runCommand(recipeFor(start + std::string(9000, 'x')), &failure), 0);
        EXPECT_THAT(failure, HasSubstr("characters, the command interpreter takes at most 8191."));
        EXPECT_FALSE(std::filesystem::exists(dir / "out"));
        EXPECT_EQ(runCommand(recipeFor(start + std::string(7000, 'x')), &failure), 0);
        EXPECT_EQ(failure, "");
    } else {
        EXPECT_EQ(runCommand(recipeFor(start + std::string(100'000, 'x')), &failure), 0);
        EXPECT_NE(runCommand(recipeFor(start + std::string(200'000, 'x')), &failure), 0);
        EXPECT_THAT(failure, StartsWith("Command interpreter '/bin/sh' could not be started: "));
    }
}

}  // namespace
}  // namespace Vesk
