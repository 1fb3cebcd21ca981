#include "tools/create_tool.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "base/exception.h"
#include "support/console_capture.h"
#include "tools/builder.h"
#include "tools/static_tools.h"
#include "tools/tool_fixture.h"
#include "tools/tool_registry.h"

namespace Vesk::test {
namespace {

using Factory = std::unique_ptr<Matcher>;

const ToolTypeRegistration kThrowing("test_throwing", [](const auto&, const auto&, const auto&) {
    throw std::runtime_error("no compiler");
    return Factory();
});
const ToolTypeRegistration kRefusing("test_refusing", [](const auto&, const auto&, const auto&) {
    throw VeskException("TestMatcher requires want variable 'x'.");
    return Factory();
});
const ToolTypeRegistration kEmpty("test_empty",
                                  [](const auto&, const auto&, const auto&) { return Factory(); });

std::shared_ptr<const ContextTemplate> sourceOf(const std::vector<Assignment>& assignments) {
    auto source = std::make_shared<ContextTemplate>();
    source->assignments = assignments;
    return source;
}

struct SkipCase {
    std::vector<Assignment> declared;
    const char* message;
};

TEST(CreateTool, LeavesOutWhatItCannotMakeAndSaysWhy) {
    const std::vector<SkipCase> cases = {
        {{var("other", num(1))}, "Registry tool 'cc' has no 'tool_type'. Skipping."},
        {{var("tool_type", str(""))}, "Registry tool 'cc' has empty 'tool_type'. Skipping."},
        {{var("tool_type")}, "Registry tool 'cc' has empty 'tool_type'. Skipping."},
        {{var("tool_type", str("command")), var("Tool_Type", str("pwsh"))},
         "Registry tool 'cc' has multiple 'tool_type' assignments. Skipping."},
        {{var("tool_type", str("zzzzzzzz"))},
         "Unable to create Registry tool 'cc' for 'zzzzzzzz'."},
        {{var("tool_type", str("comand"))},
         "Unable to create Registry tool 'cc' for 'comand'. (did you mean 'command'?)"},
        {{var("tool_type", str("test_empty"))},
         "Unable to create Registry tool 'cc' for 'test_empty'."},
        {{var("tool_type", str("test_throwing"))},
         "Unable to create Registry tool 'cc' for 'test_throwing': no compiler"},
        {{var("tool_type", str("test_refusing"))},
         "Unable to create Registry tool 'cc' for 'test_refusing': "
         "TestMatcher requires want variable 'x'."},
    };
    for (const SkipCase& c : cases) {
        SCOPED_TRACE(c.message);
        Toolbox box;
        ConsoleCapture console;
        EXPECT_FALSE(addTool(box, {"Registry", "cc", contextOf(c.declared), sourceOf(c.declared)}));
        EXPECT_EQ(console.text(), std::string(c.message) + "\n");
        EXPECT_EQ(box.size(), 0u);
    }
    ConsoleCapture console;
    EXPECT_EQ(createTool({"Project 'p'", "cc", nullptr}), nullptr);
    EXPECT_EQ(console.text(), "Project 'p' tool 'cc' has null context. Skipping.\n");
}

TEST(CreateTool, DeclaredValuesReachTheTool) {
    const auto tool =
        createTool({"Registry", "sh",
                    contextOf({var("TOOL_TYPE", str("Command")), must("cmdline", str("echo hi")),
                               var("toolchain_name", str("Shell 1")), var("arch", str("x64"))})});
    ASSERT_NE(tool, nullptr);
    EXPECT_EQ(tool->typeWord(), "command");
    EXPECT_EQ(tool->description(), "command 'sh' (Shell 1)");
    EXPECT_EQ(tool->match(*contextOf({})).note, MatchNote::BuildPossible);
    EXPECT_EQ(tool->match(*contextOf({var("arch", str("x64"))})).matches.at("arch"),
              MatchKind::ExactMatch);
    EXPECT_EQ(tool->clone()->description(), tool->description());
}

TEST(CreateTool, ToolsShareNothingWithTheirDeclaration) {
    const auto context = contextOf({var("tool_type", str("command")), var("arch", str("x64"))});
    const auto tool = createTool({"Registry", "sh", context});
    context->find("arch")->value->append(*str("changed"));
    EXPECT_EQ(tool->declaredSettings().find("arch")->second.value->toString(), "x64");
}

TEST(CreateTool, ALaterDeclarationOverrides) {
    const auto context = contextOf({var("tool_type", str("command"))});
    Toolbox box;
    ConsoleCapture console;
    EXPECT_TRUE(addTool(box, {"Registry", "cc", context}));
    EXPECT_TRUE(addTool(box, {"Project 'p'", "CC", context}));
    EXPECT_EQ(console.text(),
              "Tool 'CC' from Project 'p' overrides an earlier tool with the same name.\n");
    EXPECT_EQ(box.size(), 1u);
}

TEST(CreateStaticTool, LeavesOutWhatItCannotMake) {
    Toolbox box;
    ConsoleCapture console;
    EXPECT_FALSE(createStaticTool(box, "default_x", "test_throwing"));
    EXPECT_FALSE(createStaticTool(box, "default_x", "test_refusing"));
    EXPECT_FALSE(createStaticTool(box, "default_x", "test_empty"));
    EXPECT_EQ(console.text(),
              "Unable to create static tool 'default_x' (test_throwing): no compiler\n"
              "TestMatcher requires want variable 'x'.\n"
              "Unable to create static tool 'default_x' (test_empty).\n");
    EXPECT_EQ(box.size(), 0u);
}

}  // namespace
}  // namespace Vesk::test
