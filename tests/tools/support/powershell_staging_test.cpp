#include "tools/support/powershell_staging.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tools/support/parent_directory.h"

namespace Vesk::test {
namespace {

TEST(PowerShellStaging, RecreatesTheDirectoryThenCopies) {
    const std::filesystem::path destination = "out/st'age";
    const auto recipes = stagingRecipes(destination, {{"src/a b.txt", "lib/a.txt"}, {"c", "c"}}, 3);
    ASSERT_EQ(recipes.size(), 3u);
    EXPECT_EQ(recipes[0].command,
              "if (Test-Path -LiteralPath 'out/st''age') { "
              "Remove-Item -LiteralPath 'out/st''age' "
              "-Recurse -Force }; New-Item -ItemType "
              "Directory -Force -Path 'out/st''age' | "
              "Out-Null");

    const std::string target =
        quoteForPowerShell(platform::pathToUtf8(destination / std::filesystem::path("lib/a.txt")));
    const std::string parent =
        quoteForPowerShell(platform::pathToUtf8((destination / "lib/a.txt").parent_path()));
    EXPECT_EQ(recipes[1].command, "New-Item -ItemType Directory -Force -Path " + parent +
                                      " | Out-Null; Copy-Item -LiteralPath 'src/a b.txt' "
                                      "-Destination " +
                                      target + " -Force");
    for (const Recipe& recipe : recipes) {
        EXPECT_EQ(recipe.shell, shell::kPowershell);
        EXPECT_EQ(recipe.stage, &recipe == &recipes[0] ? 3u : 4u);
    }
}

TEST(ParentDirectory, IgnoresTrailingSeparators) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"a", ""}, {"a/b", "a"}, {"a/b//", "a"}, {"a/b\\/", "a"}, {"/a", "/"}, {"", ""}, {"/", ""},
    };
    for (const auto& [whole, parent] : cases) {
        EXPECT_EQ(platform::pathToUtf8(parentDirectory(whole)), parent) << whole;
    }
}

}  // namespace
}  // namespace Vesk::test
