#include "run/run_command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
