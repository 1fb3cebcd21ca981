// The modes that build nothing.

#include <gtest/gtest.h>

#include "app/support.h"
#include "base/exception.h"

namespace Vesk {
namespace {

constexpr const char* kProject = R"(name demo
units {
  main { "vesk.txt" }
  extra { "sub/vesk.txt" }
}
profiles {
  release { }
  Debug { }
}
)";

class Modes : public ApplicationTest {
  protected:
    void writeProject() const {
        write(".vesk_project.txt", kProject);
        write("vesk.txt", "app: library @more { }\nlibrary: app { description = \"the core\" }\n");
        write("sub/vesk.txt", "\ntool: { }\n");
    }
};

TEST_F(Modes, PrintTheHelp) {
    const Outcome help = {0,
                          "vesk [options] target? [assignment]*\n"
                          "Options: \n"
                          "  -l <unit>  list targets from unit (1 = main unit)\n"
                          "  -u         list units from project file\n"
                          "  -p         list profiles from project file\n"
                          "  -v <num>   verbosity level, default = 2\n"
                          "  -j <num>   thread count\n"
                          "  -f <file>  default vesk file override\n"
                          "  -o <file>  main target outputs\n"
                          "  -r         register current project\n"
                          "  --find-compilers   detect and register default toolchains\n"
                          "  --version\n"
                          "  --create-project     initialise project file\n"};
    EXPECT_EQ(run({"-h", "-r"}), help);
    EXPECT_EQ(run({"-r", "-h", "-l"}), help);
}

TEST_F(Modes, PrintTheVersion) {
    EXPECT_EQ(run({"-u", "--version"}), (Outcome{0, "3.16.1.0\n"}));
    EXPECT_EQ(run({"--version", "-v", "6"}), (Outcome{0, ""}));
}

TEST_F(Modes, HaveNothingToListWithoutAProject) {
    const Outcome nothing = {-1, "No file to list. You need .vesk_project.txt.\n"};
    EXPECT_EQ(run({"-p"}), nothing);
    EXPECT_EQ(run({"-u"}), nothing);
    EXPECT_EQ(run({"-u", "-v", "8"}), (Outcome{-1, ""}));
}

TEST_F(Modes, ListProfilesAndUnitsFromAnywhereInTheProject) {
    writeProject();
    enter("sub/below");
    EXPECT_EQ(run({"-p"}), (Outcome{0, "Debug\nrelease\n"}));
    EXPECT_EQ(run({"-u"}), (Outcome{0, "main\nextra\n"}));
}

TEST_F(Modes, TraceTheWayToTheProject) {
    writeProject();
    enter("sub");
    EXPECT_EQ(run({"-u", "-v", "1"}).output,
              "Found a project file at DIR\n"
              "Setting project root to DIR\n"
              "Loading project file DIR/.vesk_project.txt\n"
              "Parsing DIR/vesk.txt\n"
              "Parsing DIR/sub/vesk.txt\n"
              "main\nextra\n");
}

TEST_F(Modes, ListTargets) {
    writeProject();
    const Outcome main = {0, "app      library @more\nlibrary  the core\n"};
    EXPECT_EQ(run({"-l", "main"}), main);
    EXPECT_EQ(run({"-l", "1", "debug", "x=1"}), main);
    EXPECT_EQ(run({"-l", "extra"}), (Outcome{0, "tool\n"}));
    EXPECT_EQ(run({"-l", "extr"}),
              (Outcome{1, "Error: Unit 'extr' not found. (did you mean 'extra'?)\n"}));
    EXPECT_EQ(run({"-l", "1", "debug", "release"}),
              (Outcome{1, "Error: Profile already set to 'Debug'. It can only be set once.\n"}));
}

TEST_F(Modes, ListTargetsOfAUnitWithoutAProject) {
    write("one.txt", "a: { }");
    enter("elsewhere");
    EXPECT_EQ(run({"-f", "../one.txt", "-l", "one"}), (Outcome{0, "a\n"}));
    EXPECT_EQ(run({"-c", "-l", "1"}), (Outcome{0, "cmdline\n"}));
}

TEST_F(Modes, RegisterTheProject) {
    writeProject();
    EXPECT_EQ(run({"-r"}), (Outcome{0, "Updated file 'DIR/data/vesk/.vesk_registry.txt'.\n"}));
    EXPECT_EQ(content("data/vesk/.vesk_registry.txt"), "projects {\n  demo \"DIR\"\n}\n");
}

TEST_F(Modes, CannotRegisterWithoutAProject) {
    EXPECT_EQ(run({"-r"}),
              (Outcome{1,
                       "Error: project '.vesk_project.txt' not found. It was looked for in DIR "
                       "and above; vesk --create-project makes one.\n"}));
}

TEST_F(Modes, CreateAProjectInTheCurrentDirectory) {
    writeProject();
    write("sub/deeper/VESK.TXT", "unit deep\n");
    enter("sub");
    EXPECT_EQ(run({"--create-project"}),
              (Outcome{0, "Created file 'DIR/sub/.vesk_project.txt'.\n"}));
    EXPECT_EQ(content("sub/.vesk_project.txt"),
              "name sub\nunits\n{\ndeep\n{\n  \"deeper/VESK.TXT\"\n}\n"
              "sub\n{\n  \"vesk.txt\"\n}\n}\n");
}

TEST_F(Modes, KeepTheRegistryWhenNoCompilerIsFound) {
    write("data/vesk/.vesk_registry.txt", "projects { demo \"DIR\" }");
    const Outcome found = run({"--find-compilers"});
    EXPECT_EQ(found.status, 0);
    EXPECT_NE(found.output.find("Updated file 'DIR/data/vesk/.vesk_registry.txt'.\n"),
              std::string::npos)
        << found.output;
    EXPECT_NE(content("data/vesk/.vesk_registry.txt").find("projects {\n  demo \"DIR\"\n}"),
              std::string::npos);
}

TEST_F(Modes, ReportErrorsOfEitherFamily) {
    EXPECT_EQ(run({"-f"}), (Outcome{1, "unknown switch\n"}));
    EXPECT_EQ(run({"-l", "-u"}), (Outcome{1, "Option '-l' requires a unit.\n"}));
    EXPECT_EQ(run({"-f", "none.txt", "-l", "1"}),
              (Outcome{1, "Error: Standalone unit path is not a file: DIR/none.txt\n"}));
    EXPECT_EQ(run({"-v", "8", "-f"}), (Outcome{1, ""}));
}

}  // namespace
}  // namespace Vesk
