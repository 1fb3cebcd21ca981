// The build mode, with targets of which the system's shell runs nothing but "exit".

#include <gtest/gtest.h>

#include "app/support.h"
#include "platform/system.h"

namespace Vesk {
namespace {

class BuildMode : public ApplicationTest {
  protected:
    /// The lines of -o after a build that must succeed.
    std::string outputsOf(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"-v", "6", "-o", "outputs"});
        EXPECT_EQ(run(arguments), (Outcome{0, ""}));
        return content("outputs");
    }
};

TEST_F(BuildMode, BuildsTheFirstTargetOrTheOneThatIsNamed) {
    write("vesk.txt",
          "a: { cmdline = \"exit 0\" ^WHICH = \"a\" }\n"
          "b: { cmdline = \"exit 0\" ^WHICH = \"b\" }\n");
    EXPECT_EQ(outputsOf({}), "result = 0\nWHICH = a\n");
    EXPECT_EQ(outputsOf({"b"}), "result = 0\nWHICH = b\n");
    EXPECT_EQ(outputsOf({"1::b"}), "result = 0\nWHICH = b\n");
    EXPECT_EQ(outputsOf({"vesk::b"}), "result = 0\nWHICH = b\n");
}

TEST_F(BuildMode, GivesTargetsTheBuiltinsAndTheCommandLine) {
    write("vesk.txt", R"(a: {
    cmdline = "exit 0"
    ^SEEN = "${os_family} ${output_def_dir} ${X}"
    ^ROOT = project_root
})");
    const std::string family = platform::kWindows ? "windows" : "unix";
    EXPECT_EQ(outputsOf({"X=\"y z\""}), "result = 0\nROOT = DIR\nSEEN = " + family + " out y z\n");
}

TEST_F(BuildMode, BuildsWhatTheCommandLineDescribes) {
    write("vesk.txt", "broken {");
    EXPECT_EQ(outputsOf({"-c", "cmdline=\"exit 0\"", "^FLAGS=\"-g\"", "FLAGS+=\"-O2\"",
                         "^MORE+=\"once\""}),
              "FLAGS = -g -O2\nMORE = once\nresult = 0\n");
    EXPECT_EQ(outputsOf({"cmdline", "-c", "cmdline=\"exit 0\"", "^R=P\"(a b)\""}),
              "R = DIR/a b\nresult = 0\n");
}

TEST_F(BuildMode, NamesWhatItLookedForAndDidNotFind) {
    EXPECT_EQ(run({}),
              (Outcome{1,
                       "Error: Standalone unit path is not a file: DIR/vesk.txt\n"
                       "  no .vesk_project.txt was found in DIR or above either\n"
                       "  name a unit file with -f, or make a project of the unit files below the "
                       "current directory with --create-project\n"}));
    write("vesk.txt", "lib: { NO_TOOL = 1 }");
    EXPECT_EQ(run({"other::lib", "-v", "6"}), (Outcome{1, "Error: Unit 'other' not found.\n"}));
    EXPECT_EQ(run({"vesk::lab", "-v", "6"}),
              (Outcome{1, "Error: Target 'vesk::lab' not found. (did you mean 'lib'?)\n"}));
    EXPECT_EQ(run({"p/u::lib", "-v", "6"}), (Outcome{1, "Error: Project 'p' not found.\n"}));
}

TEST_F(BuildMode, UsesToolsOfTheRegistryBelowThoseOfTheProject) {
    write("data/vesk/.vesk_registry.txt", R"(tools {
    mine { tool_type = "command" FROM = "registry" }
    other { tool_type = "command" if os_family != "none" { FROM = "condition" } }
    broken { }
    strange { tool_type = "none_such" }
})");
    write(".vesk_project.txt", R"(name demo
tools { Mine { tool_type = "command" FROM = "project" } }
units { main { "vesk.txt" } }
)");
    write("vesk.txt",
          "a: { cmdline = \"exit 0\" FROM = \"project\" ^TOOL = FROM }\n"
          "b: { cmdline = \"exit 0\" FROM = \"condition\" }\n");
    const Outcome first = run({"a", "-v", "3"});
    EXPECT_EQ(first.status, 0);
    EXPECT_NE(first.output.find("Best registered tool: Mine, score: 2"), std::string::npos);
    EXPECT_NE(first.output.find("Registry tool 'broken' has no 'tool_type'. Skipping."),
              std::string::npos);
    EXPECT_NE(first.output.find("Unable to create Registry tool 'strange' for 'none_such'."),
              std::string::npos);
    EXPECT_NE(first.output.find("Tool 'Mine' from Project 'demo' overrides an earlier tool with "
                                "the same name."),
              std::string::npos);
    const Outcome second = run({"b", "-v", "3"});
    EXPECT_NE(second.output.find("Best registered tool: other, score: 2"), std::string::npos);
}

TEST_F(BuildMode, DumpsImplicitContextsUnderTheProfile) {
    write(".vesk_project.txt", R"(name demo
units { main { "vesk.txt" } }
profiles { fast { LEVEL = 3 } }
)");
    write("vesk.txt", "a: { NO_TOOL = 1 }");
    const Outcome dumped = run({"-d", "FAST", "X=1"});
    EXPECT_EQ(dumped.status, 0);
    EXPECT_TRUE(
        dumped.output.starts_with("Starting build\nImplicit context for project 'demo':\n"
                                  "{\n"))
        << dumped.output;
    for (const char* line : {"LEVEL = 3\n", "PROFILE = \"fast\"\n", "X = 1\n"}) {
        EXPECT_NE(dumped.output.find(line), std::string::npos) << line << dumped.output;
    }
}

TEST_F(BuildMode, FailsWithTheStatusOfAnError) {
    write("vesk.txt", "a: { cmdline = \"exit 3\" }\nb: { }\n");
    EXPECT_EQ(run({"-v", "7"}).status, 1);
    const Outcome noTool = run({"b", "-v", "6"});
    EXPECT_EQ(noTool.status, 1);
    EXPECT_TRUE(noTool.output.starts_with("Error: No tool to build vesk::b\n")) << noTool.output;
    EXPECT_EQ(run({"-n", "-v", "6", "-o", "outputs"}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(directory_ / "outputs"));
}

TEST_F(BuildMode, ReportsAnOutputFileThatCannotBeWritten) {
    write("vesk.txt", "a: { NO_TOOL = 1 }");
    const Outcome failed = run({"-v", "6", "-o", "no/such/file"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(failed.output.starts_with("Error: Unable to write output file 'no/such/file': "))
        << failed.output;
}

}  // namespace
}  // namespace Vesk
