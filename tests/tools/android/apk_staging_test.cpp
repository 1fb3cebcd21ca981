// How files are brought together with PowerShell before they are packed.

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/system.h"
#include "tools/android/apk_recipes.h"
#include "tools/scratch_directory.h"
#include "tools/support/powershell_staging.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

TEST(ApkStaging, EmptiesTheDirectoryThenCopiesThenPacks) {
    const ScratchDirectory directory;
    const char* ending = platform::kWindows ? ".bat" : "";
    directory.write(std::string("tools/apksigner") + ending, "");
    for (const char* file : {"a's/x.so", "b/x.so", "own.dex", "AndroidManifest.xml", "key"}) {
        directory.write(file, "");
    }
    auto target = std::make_shared<Target>();
    target->name = "app";
    const auto context = contextOf<TargetContext>(
        {var("MANIFEST", str("AndroidManifest.xml")), var("DEX_FILES", list({str("own.dex")})),
         var("NATIVE_LIBS", list({str("a's/x.so"), str("b/x.so")})), var("KEYSTORE", str("key")),
         var("KEYSTORE_PASS", str("env:P"))},
        target, "main::app");
    BuildEnvSettings settings;
    settings.projectRoot = platform::pathFromUtf8(directory.path());
    const BuildEnv environment(settings);
    ApkRecipes made(*context, environment,
                    {{"30.0.3", directory.path() + "/tools"}, "android.jar", "29", "", true});
    made.make();

    const std::string stage = directory.path() + "/out/.obj/main/app/stage";
    const auto quoted = [](const std::string& path) {
        return quoteForPowerShell(nativePath(path));
    };
    const auto copy = [&](const char* source, const std::string& number, const char* name) {
        return "New-Item -ItemType Directory -Force -Path " + quoted(stage + "/" + number) +
               " | Out-Null; Copy-Item -LiteralPath " + quoted(directory.path() + "/" + source) +
               " -Destination " + quoted(stage + "/" + number + "/" + name) + " -Force";
    };
    const std::vector<std::string> expected = {
        "if (Test-Path -LiteralPath " + quoted(stage) + ") { Remove-Item -LiteralPath " +
            quoted(stage) + " -Recurse -Force }; New-Item -ItemType Directory -Force -Path " +
            quoted(stage) + " | Out-Null",
        copy("own.dex", "0", "own.dex"), copy("a's/x.so", "1", "x.so"), copy("b/x.so", "2", "x.so"),
        "Packing out/.obj/main/app/unsigned.apk with own.dex, a's/x.so, b/x.so"};
    std::vector<std::string> commands;
    std::vector<std::uint32_t> stages;
    std::vector<std::string> copies;
    for (const Recipe& recipe : made.recipes) {
        const bool packs = recipe.command.starts_with("Packing");
        if (recipe.shell != shell::kPowershell && !packs) {
            continue;
        }
        commands.push_back(recipe.command);
        stages.push_back(recipe.stage - made.recipes.front().stage);
        EXPECT_EQ(recipe.declaration, Declaration::Complete);
        for (std::size_t i = 1; packs && i < recipe.inputs.size(); ++i) {
            copies.push_back(normalPath(recipe.inputs[i].assignment.value->toString()));
        }
    }
    EXPECT_EQ(commands, expected);
    EXPECT_LT(stages[0], stages[1]);
    EXPECT_EQ(stages[1], stages[3]);
    EXPECT_LT(stages[3], stages[4]);
    EXPECT_EQ(copies, (std::vector<std::string>{stage + "/0/own.dex", stage + "/1/x.so",
                                                stage + "/2/x.so"}));
}

}  // namespace
}  // namespace Vesk::test
