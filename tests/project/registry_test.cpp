#include "project/registry.h"

#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/registry_text.h"
#include "project/tool_entry.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

using ::testing::HasSubstr;
namespace fs = std::filesystem;

class RegistryFileTest : public Workspace {
  protected:
    Registry reloaded() const { return loadRegistry(path(kRegistryFileName)); }
};

TEST_F(RegistryFileTest, IsWrittenAsItIsRead) {
    const std::string projects = "projects {\n  app \"/a b\"\n  zoo \"C:\\z\"\n}\n";
    const std::string tools =
        "tools {\n"
        "  gcc {\n"
        "    ?HINT ?= other.name[0]\n"
        "    LIST += [1, \"two\", P\"(C:/opt/my tools)\", []]\n"
        "    !MUST\n"
        "    NUMBER = -5\n"
        "    ^OUT = \"${ascii[34]}#{list}\"\n"
        "    QUOTE = R\"(say \"hi\" to C:\\Program Files (x86)\\x)\"\n"
        "    ROOTED = P\"(${ROOT}/bin)\"\n"
        "  }\n"
        "}\n";
    const std::string both = projects + "\n" + tools;
    for (const std::string& text : {std::string(), projects, tools, both}) {
        write(kRegistryFileName, text);
        EXPECT_EQ(registryText(reloaded()), text);
    }
}

TEST_F(RegistryFileTest, IsWrittenWithAllThatWasRead) {
    const std::string type = "    tool_type = \"command\"\n";
    const std::string append = "    F = \"-O2\"\n    F += extra\n    F += \"-g\"\n";
    const std::pair<std::string, std::string> cases[] = {
        {append + type, append + type},
        {"    F = \"a\"\n    f += \"b\"\n" + type, "    F = \"a b\"\n" + type},
        {"    F ?= \"a\"\n    F += \"b\"\n" + type, "    F ?= \"a\"\n    F += \"b\"\n" + type},
        {"    F = \"a\"\n    ^F += \"b\"\n" + type, "    F = \"a\"\n    ^F += \"b\"\n" + type},
        {type + "    F = 1\n    Tool_Type = \"pwsh\"\n    F += \"x\"\n",
         type + "    F = 1\n    Tool_Type = \"pwsh\"\n    F += \"x\"\n"},
    };
    for (const auto& [body, expected] : cases) {
        const auto tools = [](const std::string& inner) {
            return "tools {\n  Zed {\n" + inner + "  }\n  zed {\n    x = 1\n  }\n}\n";
        };
        write(kRegistryFileName, tools(body));
        EXPECT_EQ(registryText(reloaded()), tools(expected));
    }
}

TEST_F(RegistryFileTest, HasAnotherFormForWhatALiteralCannotHold) {
    auto context = std::make_shared<Context>();
    context->mergeAssignment(textAssignment("FLAGS", "-DX=\"(a)\""));
    registry.registerTool("t", context);
    EXPECT_EQ(registryText(registry),
              "tools {\n  t {\n    FLAGS = \"-DX=${ascii[34]}(a)${ascii[34]}\"\n  }\n}\n");
}

// The order of values and entries changes; every comment stays with its line.
TEST_F(RegistryFileTest, KeepsComments) {
    write(kRegistryFileName,
          "// my registry\n/* of tools */\n"
          "projects { // by name\n"
          "  // the tool\n"
          "  zoo \"/z\" // shared\n"
          "  app /* inside */ \"/a\"\n"
          "  // end of projects\n"
          "}\n\n"
          "// compilers\n"
          "tools {\n"
          "  gcc { // mine\n"
          "    tool_type = \"gnu-gcc\"\n"
          "    // where it is: \"quoted // text\"\n"
          "    PATHS = [ \"// no comment\", // a comment\n"
          "              \"/* nor this */\" ]\n"
          "    ?LAST = a.if // for the choice\n"
          "    if os = \"x\" { /* odd */ B = 1 if x { y += 1 } }\n"
          "  } // gcc\n"
          "}\n"
          "// the end");
    Registry changed = reloaded();
    changed.registerProject("bee", "/b");
    const std::string expected =
        "// my registry\n/* of tools */\n"
        "projects { // by name\n"
        "  /* inside */\n"
        "  app \"/a\"\n"
        "  bee \"/b\"\n"
        "  // the tool\n"
        "  zoo \"/z\" // shared\n"
        "// end of projects\n"
        "}\n\n"
        "// compilers\n"
        "tools {\n"
        "  gcc { // mine\n"
        "    ?LAST = a.if // for the choice\n"
        "    // where it is: \"quoted // text\"\n"
        "    // a comment\n"
        "    PATHS = [\"// no comment\", \"/* nor this */\"]\n"
        "    tool_type = \"gnu-gcc\"\n"
        "    /* odd */\n"
        "    if os = \"x\" {\n"
        "      B = 1\n"
        "      if x {\n"
        "        y += 1\n"
        "      }\n"
        "    }\n"
        "  } // gcc\n"
        "}\n"
        "// the end\n";
    EXPECT_EQ(registryText(changed, read(kRegistryFileName)), expected);
    EXPECT_EQ(registryText(changed, expected), expected) << "a second writing changes nothing";
}

TEST_F(RegistryFileTest, KeepsCommentsOfLinesThatAreGone) {
    const std::string old = "tools { // t\n a { x = 1 // x\n } // a\n}";
    EXPECT_EQ(registryText(registry, old), "// t\n// x\n// a\n");
}

TEST_F(RegistryFileTest, WarnsOfSecondEntries) {
    write(kRegistryFileName,
          "projects { a \"1\" a \"2\" } tools { t { x = 1 } T { x = 2 } t { x = 3 } }");
    EXPECT_EQ(outputOf([&] {
                  const Registry read = reloaded();
                  EXPECT_EQ(read.projects.at("a"), "1");
                  EXPECT_EQ(read.tools.at("t").context->textOf("x"), "1");
              }),
              "Duplicate project 'a' in registry '<ws>/.vesk_registry.txt'. The first counts.\n"
              "Duplicate tool 't' in registry '<ws>/.vesk_registry.txt'. The first counts.\n");
}

TEST_F(RegistryFileTest, FindsProjects) {
    write(kRegistryFileName, "projects { near \"sub/../lib dir/\" far \"C:\\far\" }");
    const Registry read = reloaded();
    EXPECT_EQ(read.findRegisteredProject("near"), path("lib dir/"));
    EXPECT_EQ(platform::pathToUtf8(read.findRegisteredProject("far")), "C:\\far");
    EXPECT_EQ(failureOf([&] { read.findRegisteredProject("fat"); }),
              "Registered project 'fat' not found.\n  did you mean 'far'?");
}

TEST_F(RegistryFileTest, RefusesWhatItsFileCannotHold) {
    EXPECT_EQ(failureOf([&] { registry.registerProject("", "/a"); }),
              "Project name cannot be empty.");
    EXPECT_EQ(failureOf([&] { registry.registerProject("my app", "/a"); }),
              "Project name 'my app' cannot be registered: it is not an identifier. Try 'my_app'.");
    EXPECT_THAT(failureOf([&] { registry.registerProject("a", "/a\"b"); }),
                HasSubstr("has a double quote"));
    EXPECT_THAT(failureOf([&] { registry.registerTool("units", std::make_shared<Context>()); }),
                HasSubstr("not an identifier"));
    EXPECT_TRUE(registry.projects.empty() && registry.tools.empty());
}

TEST_F(RegistryFileTest, StaysAsItIsWhenItCannotBeReadOrWritten) {
    const std::string broken = "projects { a }";
    write(kRegistryFileName, broken);
    const auto registerB = [](Registry& r) { r.registerProject("b", "/b"); };
    EXPECT_NE(failureOf([&] { updateRegistry(path(kRegistryFileName), registerB); }), "");
    EXPECT_EQ(read(kRegistryFileName), broken);

    registry.file = path("gone/.vesk_registry.txt");
    EXPECT_THAT(failureOf([&] { writeRegistry(registry); }),
                ::testing::StartsWith("Unable to open registry file for writing: "
                                      "<ws>/gone/.vesk_registry.txt\n"));
    fs::create_directories(path("taken/.vesk_registry.txt.tmp"));
    registry.file = path("taken/.vesk_registry.txt");
    EXPECT_THAT(failureOf([&] { writeRegistry(registry); }),
                ::testing::StartsWith("Unable to open registry file for writing: "));
}

TEST(ToolEntries, TellTypeAndToolchain) {
    ToolEntry tool;
    tool.name = "t";
    const auto failureOf = [&](const auto& call) -> std::string {
        try {
            call();
            return "";
        } catch (const VeskException& error) {
            return error.text();
        }
    };
    EXPECT_EQ(failureOf([&] { toolTypeOf(tool); }), "Build tool 't' has no context.");
    EXPECT_EQ(failureOf([&] { toolchainNameOf(tool); }), "Build tool context is null.");
    tool.context = std::make_shared<Context>();
    EXPECT_EQ(toolchainNameOf(tool), std::nullopt);
    tool.context->mergeAssignment(textAssignment("TOOL_TYPE", "gnu-gcc"));
    tool.context->mergeAssignment(textAssignment("Toolchain_Name", "gcc-12"));
    EXPECT_EQ(toolTypeOf(tool), "gnu-gcc");
    EXPECT_EQ(toolchainNameOf(tool), "gcc-12");
    auto source = std::make_shared<ContextTemplate>();
    source->assignments = {textAssignment("toolchain_name", "a"),
                           textAssignment("TOOLCHAIN_NAME", "b")};
    tool.source = source;
    EXPECT_EQ(failureOf([&] { toolchainNameOf(tool); }),
              "Build tool context has multiple 'name' assignments.");
}

}  // namespace
}  // namespace Vesk::test
