#include "project/registry.h"

#include <thread>

#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/registry_text.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

using ::testing::HasSubstr;
namespace fs = std::filesystem;

class RegistryFileTest : public Workspace {
  protected:
    std::string file() const { return platform::pathToUtf8(path(kRegistryFileName)); }

    Registry reloaded() const { return loadRegistry(path(kRegistryFileName)); }

    static std::shared_ptr<Context> contextOf(const std::vector<std::string>& lines) {
        auto context = std::make_shared<Context>();
        for (const std::string& line : lines) {
            // Assignments given as text cannot have this modifier, those of tools can.
            const bool must = line.starts_with('!');
            Assignment assignment = parseAssignment(line.substr(must ? 1 : 0), {});
            assignment.modifier = must ? AssignModifier::Must : assignment.modifier;
            context->mergeAssignment(assignment);
        }
        return context;
    }
};

TEST_F(RegistryFileTest, HasOneLayoutForEverySetOfSections) {
    EXPECT_EQ(registryText(registry), "");
    registry.registerTool("gcc", contextOf({"tool_type = \"gnu-gcc\"", "!CC"}));
    const std::string tools = "tools {\n  gcc {\n    !CC\n    tool_type = \"gnu-gcc\"\n  }\n}\n";
    EXPECT_EQ(registryText(registry), tools);
    registry.registerProject("zoo", "/z");
    registry.registerProject("app", "/first");
    registry.registerProject("app", "/a b");
    const std::string projects = "projects {\n  app \"/a b\"\n  zoo \"/z\"\n}\n";
    EXPECT_EQ(registryText(registry), projects + "\n" + tools);
    registry.tools.clear();
    EXPECT_EQ(registryText(registry), projects);
}

TEST_F(RegistryFileTest, IsReadBackAsItWas) {
    registry.registerProject("here", path("a project's place"));
    registry.registerTool("My-Tool", contextOf({
                                         "tool_type = \"command\"",
                                         "QUOTE = R\"(say \"hi\")\"",
                                         "WINDOWS = R\"(C:\\Program Files (x86)\\x)\"",
                                         "EXPANDED = \"${ascii[34]}#{list}\"",
                                         "ROOT = P\"(C:/opt/my tools)\"",
                                         "BIN = P\"(${ROOT}/bin)\"",
                                         "^OUT += [1, \"two\", other.name[0]]",
                                         "?HINT ?= -5",
                                         "!MUST",
                                         "EMPTY = []",
                                     }));
    outputOf([&] { writeRegistry(registry); });
    const std::string written = read(kRegistryFileName);
    const Registry again = reloaded();
    EXPECT_EQ(registryText(again), written);
    EXPECT_EQ(again.projects, registry.projects);
    const Context& before = *registry.tools.at("my-tool").context;
    const Context& after = *again.tools.at("MY-TOOL").context;
    ASSERT_EQ(after.assignments().size(), before.assignments().size());
    for (const auto& [name, assignment] : before.assignments()) {
        const Assignment* other = after.find(name);
        ASSERT_NE(other, nullptr) << name.str();
        EXPECT_EQ(other->toSourceString(), assignment.toSourceString());
        EXPECT_EQ(other->op, assignment.op) << name.str();
        EXPECT_EQ(other->modifier, assignment.modifier) << name.str();
    }
}

TEST_F(RegistryFileTest, KeepsConditionsOfTools) {
    const std::string text =
        "tools {\n  t {\n    tool_type = \"command\"\n    if os_family = \"windows\" {\n"
        "      cmdline = \"copy\"\n      if x {\n        y += 1\n      }\n    }\n  }\n}\n";
    write(kRegistryFileName, text);
    EXPECT_EQ(registryText(reloaded()), text);
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
          "    if os = \"x\" { /* odd */ B = 1 }\n"
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

TEST_F(RegistryFileTest, SaysWhatItWrote) {
    registry.registerProject("a", "/a");
    EXPECT_EQ(outputOf([&] { writeRegistry(registry); }),
              "Updated file '<ws>/.vesk_registry.txt'.\n");
}

TEST_F(RegistryFileTest, IsNotThereAtFirst) {
    EXPECT_TRUE(reloaded().projects.empty());
    EXPECT_FALSE(fs::exists(path(kRegistryFileName)));
}

TEST_F(RegistryFileTest, WarnsOfSecondEntries) {
    write(kRegistryFileName, "projects { a \"1\" a \"2\" } tools { t { x = 1 } T { x = 2 } }");
    EXPECT_EQ(outputOf([&] {
                  const Registry read = reloaded();
                  EXPECT_EQ(read.projects.at("a"), "1");
                  EXPECT_EQ(read.tools.at("t").context->textOf("x"), "1");
              }),
              "Duplicate project 'a' in registry '<ws>/.vesk_registry.txt'. The first counts.\n"
              "Duplicate tool 'T' in registry '<ws>/.vesk_registry.txt'. The first counts.\n");
}

TEST_F(RegistryFileTest, FindsProjects) {
    write(kRegistryFileName, "projects { near \"sub/../lib dir/\" far \"C:\\far\" }");
    const Registry read = reloaded();
    EXPECT_EQ(read.findRegisteredProject("near"), path("lib dir/"));
    EXPECT_EQ(platform::pathToUtf8(read.findRegisteredProject("far")), "C:\\far");
    EXPECT_EQ(failureOf([&] { read.findRegisteredProject("fat"); }),
              "Registered project 'fat' not found. (did you mean 'far'?)");
}

TEST_F(RegistryFileTest, RefusesWhatItsFileCannotHold) {
    EXPECT_EQ(failureOf([&] { registry.registerProject("", "/a"); }),
              "Project name cannot be empty.");
    EXPECT_EQ(failureOf([&] { registry.registerProject("my app", "/a"); }),
              "Project name 'my app' cannot be registered: it is no identifier. Try 'my_app'.");
    EXPECT_THAT(failureOf([&] { registry.registerProject("a", "/a\"b"); }),
                HasSubstr("has a double quote"));
    EXPECT_THAT(failureOf([&] { registry.registerTool("units", contextOf({})); }),
                HasSubstr("no identifier"));
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

TEST_F(RegistryFileTest, LosesNothingWhenManyRegisterAtOnce) {
    constexpr int kWriters = 8;
    constexpr int kEach = 5;
    outputOf([&] {
        std::vector<std::thread> writers;
        for (int writer = 0; writer < kWriters; ++writer) {
            writers.emplace_back([&, writer] {
                for (int i = 0; i < kEach; ++i) {
                    const std::string name = "p" + std::to_string(writer * kEach + i);
                    updateRegistry(path(kRegistryFileName), [&](Registry& shared) {
                        shared.registerProject(name, "/" + name);
                    });
                }
            });
        }
        for (std::thread& writer : writers) {
            writer.join();
        }
    });
    EXPECT_EQ(reloaded().projects.size(), static_cast<std::size_t>(kWriters * kEach));
    EXPECT_FALSE(fs::exists(file() + ".tmp"));
}

TEST(ToolEntries, TellTypeAndToolchain) {
    ToolEntry tool;
    tool.name = "t";
    const auto failureOf = [&](const auto& call) -> std::string {
        try {
            call();
            return "";
        } catch (const VeskException& error) {
            return error.message();
        }
    };
    EXPECT_EQ(failureOf([&] { toolTypeOf(tool); }), "Build tool 't' has no context.");
    EXPECT_EQ(failureOf([&] { toolchainNameOf(tool); }), "Build tool context is null.");
    EXPECT_EQ(failureOf([&] { toolchainNameOf(nullptr); }), "Build tool context is null.");
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
