#include "tools/create_tool.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "base/exception.h"
#include "support/console_capture.h"
#include "tools/static/static_tools.h"
#include "tools/tool_fixture.h"
#include "tools/tool_registry.h"

namespace Vesk::test {
namespace {

using Factory = std::unique_ptr<Matcher>;

const ToolTypeRegistration kThrowing({"test_throwing", [](const auto&, const auto&, const auto&) {
                                          throw std::runtime_error("no compiler");
                                          return Factory();
                                      }});
const ToolTypeRegistration kRefusing({"test_refusing", [](const auto&, const auto&, const auto&) {
                                          throw VeskException(
                                              "TestMatcher requires want variable 'x'.");
                                          return Factory();
                                      }});

TEST(CreateTool, LeavesOutWhatItCannotMakeAndSaysWhy) {
    const std::pair<std::vector<Assignment>, const char*> cases[] = {
        {{var("other", num(1))}, "Registry tool 'cc' has no 'tool_type'. Skipping."},
        {{var("tool_type", str(""))}, "Registry tool 'cc' has empty 'tool_type'. Skipping."},
        {{var("tool_type", str("command")), var("Tool_Type", str("pwsh"))},
         "Registry tool 'cc' has multiple 'tool_type' assignments. Skipping."},
        {{var("tool_type", str("comand"))},
         "Unable to create Registry tool 'cc' for 'comand'.\n  did you mean "
         "'command'?"},
        {{var("tool_type", str("test_throwing"))},
         "Unable to create Registry tool 'cc' for 'test_throwing': no compiler"},
        {{var("tool_type", str("test_refusing"))},
         "Unable to create Registry tool 'cc' for 'test_refusing': "
         "TestMatcher requires want variable 'x'."},
    };
    for (const auto& [declared, message] : cases) {
        auto source = std::make_shared<ContextTemplate>();
        source->assignments = declared;
        ConsoleCapture console;
        EXPECT_EQ(createTool({"Registry", "cc", contextOf(declared), source}), nullptr);
        EXPECT_EQ(console.text(), std::string(message) + "\n");
    }
}

TEST(CreateTool, StaticToolsAreInEveryProgramThatAsksForThem) {
    Toolbox box;
    createStaticTools(box);
    EXPECT_NE(box.find("default_basic"), nullptr);
}

}  // namespace
}  // namespace Vesk::test
