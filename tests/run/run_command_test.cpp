#include "run/run_command.h"

#include <gtest/gtest.h>

#include "base/console.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk {
namespace {

using platform::kWindows;
using test::TempDir;

TEST(RunCommand, SearchDirectoriesComeFirst) {
    const TempDir dir;
    // A program of this name exists nowhere else.
    const std::string name = "vesk_only_here";
    std::filesystem::create_directories(dir / "bin ü");
    std::filesystem::copy_file(test::childProgram(),
                               dir / ("bin ü/" + name + (kWindows ? ".exe" : "")));
    console::setThreshold(console::level::kError);
    Recipe recipe;
    recipe.command = name + " env out";
    recipe.workingDirectory = dir.path();
    EXPECT_NE(runCommand(recipe), 0);

    recipe.searchDirectories = {dir / "bin ü", dir / "second"};
    EXPECT_EQ(runCommand(recipe), 0);
    const std::string expected = "PATH=" + dir.text("bin ü") + platform::kPathListSeparator +
                                 dir.text("second") + platform::kPathListSeparator +
                                 platform::environmentVariable("PATH").value();
    const std::string seen = "\n" + test::contentOf(dir / "out");
    EXPECT_NE(seen.find("\n" + expected + "\n"), std::string::npos) << seen;
    console::setThreshold(console::kDefaultThreshold);
}

}  // namespace
}  // namespace Vesk
