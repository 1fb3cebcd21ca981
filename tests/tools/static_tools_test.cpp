#include "tools/static_tools.h"

#include <gtest/gtest.h>

#include "tools/builder.h"
#include "tools/tool_fixture.h"
#include "tools/tool_registry.h"

namespace Vesk::test {
namespace {

class StaticTools : public testing::Test {
  protected:
    StaticTools() { createStaticTools(box); }

    std::string chosen(const std::vector<Assignment>& target) const {
        const Selection best = box.select(*contextOf(target));
        return best.matcher == nullptr ? "none"
                                       : fmt::format("{} {}", best.matcher->name(), best.score);
    }

    Toolbox box;
};

TEST_F(StaticTools, AreRegisteredInEveryProgramThatCreatesThem) {
    EXPECT_EQ(box.size(), 4u);
    for (const char* word : {"command", "FILE_WRITER", "no_tool", "pwsh"}) {
        EXPECT_TRUE(isKnownToolType(word)) << word;
    }
    EXPECT_FALSE(isKnownToolType("file writer"));
    EXPECT_FALSE(isKnownToolType(""));
}

TEST_F(StaticTools, TheOneThatFitsBestIsChosen) {
    const Assignment fileName = var("FILENAME", str("f"));
    const Assignment text = var("TEXT", str("t"));
    EXPECT_EQ(chosen({}), "none");
    EXPECT_EQ(chosen({var("C_FILES", str("a.c"))}), "none");
    EXPECT_EQ(chosen({var("cmdline", str("x"))}), "default_basic 0");
    EXPECT_EQ(chosen({var("cmdline", str("x")), var("cwd", str("d"))}), "default_basic 1");
    EXPECT_EQ(chosen({var("pwsh", str("x")), var("cwd", str("d"))}), "default_pwsh 1");
    EXPECT_EQ(chosen({var("cmdline", str("x")), var("pwsh", str("x"))}), "default_basic 0");
    EXPECT_EQ(chosen({var("cmdline", str("x")), var("cwd", str("d")), var("NO_TOOL")}),
              "default_no_tool 2");
    EXPECT_EQ(chosen({fileName, text}), "none");
    EXPECT_EQ(chosen({fileName, text, var("FILE_WRITER")}), "default_file_writer 4");
    EXPECT_EQ(chosen({fileName, text, var("write_file", num(1))}), "default_file_writer 4");
    EXPECT_EQ(chosen({text, var("FILE_WRITER")}), "none");
    EXPECT_EQ(chosen({fileName, text, var("FILE_WRITER"), var("MODE", str("create")),
                      var("SEPARATOR", str(" "))}),
              "default_file_writer 7");
}

TEST_F(StaticTools, NoToolBuildsNothing) {
    const auto target = targetOf({var("NO_TOOL"), var("cmdline", str("x"))});
    const auto builder = box.find("default_no_tool")->createBuilder(*target);
    EXPECT_EQ(builder->name(), "no_tool");
    const RecipeSet set = builder->createRecipes(*target);
    EXPECT_TRUE(set.ok);
    EXPECT_TRUE(set.recipes.empty());
    EXPECT_TRUE(set.assignments.empty());
    EXPECT_TRUE(builder->commandRecipes(*target).empty());
    EXPECT_TRUE(builder->complete(*target, 0)->assignments().empty());
    EXPECT_EQ(builder->subjects().count("NO_TOOL"), 1u);
}

}  // namespace
}  // namespace Vesk::test
