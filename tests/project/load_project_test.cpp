#include "project/load_project.h"

#include "platform/system.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

std::string importNamesOf(const Project& project) {
    std::string text;
    for (const ImportedProject& import : project.imports()) {
        text += (text.empty() ? "" : " ") + import.alias + "=" + import.project->name;
        text += import.project->profile.empty() ? "" : "(" + import.project->profile + ")";
    }
    return text;
}

class LoadProject : public Workspace {};

struct BadProject {
    const char* what;
    const char* text;     ///< of p/.vesk_project.txt
    const char* profile;  ///< the one that is asked for
    const char* failure;
};

class LoadProjectFails : public Workspace, public ::testing::WithParamInterface<BadProject> {};

TEST_P(LoadProjectFails, WithTheFileInTheMessage) {
    write("p/.vesk_project.txt", GetParam().text);
    write("p/vesk.txt", "all : { }");
    write("p/other.txt", "unit other\nall : { }");
    EXPECT_EQ(failureOf([&] { load("p", GetParam().profile); }), GetParam().failure);
}

constexpr BadProject kBadProjects[] = {
    {"NoName", "units { main { \"vesk.txt\" } }", "",
     "A stored project requires a primary name: <ws>/p/.vesk_project.txt\n"
     "  give the project file a first line such as: name my_project"},
    {"WrongUnitName", "name p units { main { \"vesk.txt\" }\nmine { \"other.txt\" } }", "",
     "Unit name mismatch in <ws>/p/other.txt: expected 'mine'.\n"
     "  unit 'mine' is listed in <ws>/p/.vesk_project.txt:2"},
    {"UnknownProfile", "name p units { m { \"vesk.txt\" } } profiles { debug { } }", "debg",
     "Profile 'debg' not found in <ws>/p/.vesk_project.txt\n  did you mean 'debug'?"},
    {"ProfileTwice", "name p units { m { \"vesk.txt\" } }\nprofiles { a { }\nA { } }", "",
     "Duplicate profile 'A' in <ws>/p/.vesk_project.txt:3: the first is in line 2."},
    {"UnknownSourceProfile", "name p import { ghost: \"../q\"; } units { m { \"vesk.txt\" } }", "",
     "Profile 'ghost' not found in <ws>/p/.vesk_project.txt\n"
     "  named by an import in <ws>/p/.vesk_project.txt:1"},
    {"ToolWithTwoTypes",
     "name p tools { cc { tool_type = \"a\" Tool_Type = \"b\" } } units { m { \"vesk.txt\" } }", "",
     "Build tool 'cc' has multiple 'tool_type' assignments.\n  in <ws>/p/.vesk_project.txt:1"},
};

INSTANTIATE_TEST_SUITE_P(Projects, LoadProjectFails, ::testing::ValuesIn(kBadProjects),
                         [](const auto& each) { return std::string(each.param.what); });

TEST_F(LoadProject, NamesBothFilesWhenOneIsMissing) {
    write("p/.vesk_project.txt", "name p\nunits {\nmain { \"gone.txt\" } }");
    const std::string unitFailure = failureOf([&] { load("p"); });
    EXPECT_THAT(unitFailure, HasSubstr("<ws>/p/gone.txt"));
    EXPECT_THAT(unitFailure, HasSubstr("unit 'main' is listed in <ws>/p/.vesk_project.txt:3"));
    writeProject("top", "\"../gone\";");
    const std::string failure = failureOf([&] { load("top"); });
    EXPECT_THAT(failure, HasSubstr("<ws>/gone"));
    EXPECT_THAT(failure, HasSubstr("imported by project 'top' in <ws>/top/.vesk_project.txt:2"));
}

TEST_F(LoadProject, SkipsToolsOfUnknownTypeAndSecondOnes) {
    write("p/.vesk_project.txt",
          "name p tools { cc { tool_type = \"command\" } odd { tool_type = \"x\" }\n"
          "CC { tool_type = \"command\" } } units { m { \"vesk.txt\" } }");
    write("p/vesk.txt", "");
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(load("p").tools.size(), 1U); }),
              "Project 'p' tool 'odd' has unknown tool_type 'x'. Skipping.\n"
              "Duplicate tool 'CC' in project 'p'.\n");
}

struct Importing {
    const char* what;
    const char* imports;  ///< of project "app", which has the profiles debug and release
    const char* profile;
    const char* imported;  ///< alias=name(profile) of each
};

class Imports : public Workspace, public ::testing::WithParamInterface<Importing> {};

TEST_P(Imports, ApplyUnderTheirProfile) {
    writeProject("lib", "", "fast { } small { }");
    writeProject("util");
    registry.registerProject("reg_lib", path("lib"));
    registry.registerProject("reg_util", path("util/.vesk_project.txt"));
    writeProject("app", GetParam().imports, "debug { } release { }");
    EXPECT_EQ(importNamesOf(load("app", GetParam().profile)), GetParam().imported);
}

constexpr Importing kImports[] = {
    {"ByFile", "\"../lib/.vesk_project.txt\";", "", "lib=lib"},
    {"WithATrailingSlash", "\"../lib/\";", "", "lib=lib"},
    {"WithAnAlias", "\"../lib\" other;", "", "other=lib"},
    {"WithAProfile", "\"../lib\" other (FAST);", "", "other=lib(fast)"},
    {"ByRegisteredName", "reg_lib(small); reg_util;", "", "reg_lib=lib(small) reg_util=util"},
    {"OnlyUnderItsProfile", "debug: \"../lib\" (fast); RELEASE: \"../lib\" (small); reg_util;",
     "Release", "lib=lib(small) reg_util=util"},
};

INSTANTIATE_TEST_SUITE_P(Projects, Imports, ::testing::ValuesIn(kImports),
                         [](const auto& each) { return std::string(each.param.what); });

TEST_F(LoadProject, LoadsTheTipOfADiamondOnce) {
    writeProject("base", "", "x { }");
    writeProject("left", "\"../b\xC3\xA4se\" (x);");
    // Where names have no case, this is the same directory.
    const std::string base = platform::kWindows ? "B\xC3\x84SE" : "b\xC3\xA4se";
    fs::rename(path("base"), path("b\xC3\xA4se"));
    writeProject("right", "\"../left/../" + base + "/\" (X);");
    writeProject("top", "\"../left\"; \"../right\";");
    const std::string output = outputOf([&] { load("top"); }, console::level::kTrace);
    EXPECT_THAT(namesOf(store.projects()), ElementsAre("base", "left", "right", "top"));
    const std::string line = "Loading project file <ws>/b\xC3\xA4se/.vesk_project.txt\n";
    EXPECT_NE(output.find(line), std::string::npos) << output;
    EXPECT_EQ(output.find(line), output.rfind(line)) << output;
}

struct BadImports {
    const char* what;
    const char* top;  ///< what project "top" imports
    const char* mid;  ///< what project "mid" imports
    const char* failure;
};

/// Projects top, mid, base (with the profiles x and y), and copy, which calls itself base too.
class BadImportsFail : public Workspace, public ::testing::WithParamInterface<BadImports> {};

TEST_P(BadImportsFail, WithTheImportInTheMessage) {
    writeProject("base", "", "x { } y { }");
    fs::copy(path("base"), path("copy"), fs::copy_options::recursive);
    writeProject("mid", GetParam().mid);
    writeProject("top", GetParam().top, "p { }");
    EXPECT_EQ(failureOf([&] { load("top", "p"); }), GetParam().failure);
}

constexpr BadImports kBadImports[] = {
    {"Cycle", "\"../mid\";", "\"../top\";",
     "Import cycle: top -> mid -> top\n"
     "  imported by project 'mid' in <ws>/mid/.vesk_project.txt:2"},
    {"ItImportsItself", "\".\";", "",
     "Import cycle: top -> top\n  imported by project 'top' in <ws>/top/.vesk_project.txt:2"},
    {"TwoProfiles", "\"../base\" (x); \"../mid\";", "\"../base\" (y);",
     "Conflicting project profiles: project 'base' (<ws>/base/.vesk_project.txt) with "
     "profile 'x' versus project 'base' (<ws>/base/.vesk_project.txt) with profile 'y'\n"
     "  the first is imported by project 'top' in <ws>/top/.vesk_project.txt:2\n"
     "  a build loads a project once; name one profile in all its imports\n"
     "  imported by project 'mid' in <ws>/mid/.vesk_project.txt:2"},
    {"AnAliasForTwo", "\"../base\" x; \"../mid\" x;", "",
     "Duplicate active import alias 'x' in <ws>/top/.vesk_project.txt\n"
     "  imported by project 'top' in <ws>/top/.vesk_project.txt:2"},
    {"TwoOfOneName", "\"../base\"; \"../copy\" other;", "",
     "Duplicate project name 'base': <ws>/base/.vesk_project.txt versus "
     "<ws>/copy/.vesk_project.txt\n"
     "  imported by project 'top' in <ws>/top/.vesk_project.txt:2"},
};

INSTANTIATE_TEST_SUITE_P(Projects, BadImportsFail, ::testing::ValuesIn(kBadImports),
                         [](const auto& each) { return std::string(each.param.what); });

TEST_F(LoadProject, MakesARegisteredProjectKnownThatTheCommandLineNames) {
    writeProject("base");
    writeProject("lib", "\"../base\";");
    writeProject("top");
    registry.registerProject("mylib", path("lib"));
    Project& top = load("top");
    loader.loadRequested(top, "unknown");
    EXPECT_EQ(importNamesOf(top), "");
    loader.loadRequested(top, "mylib");
    loader.loadRequested(top, "mylib");
    EXPECT_EQ(importNamesOf(top), "mylib=lib");
    EXPECT_THAT(namesOf(store.projects()), ElementsAre("base", "lib", "top"));
}

TEST_F(LoadProject, CopesWithALongChainAndAWideFan) {
    constexpr int kLength = 1000;
    constexpr int kWidth = 100;
    std::string fan;
    for (int i = 0; i < kLength; ++i) {
        const std::string next = "\"../p" + std::to_string(i + 1) + "\";";
        writeProject("p" + std::to_string(i), i + 1 < kLength ? next : "");
        fan += i < kWidth ? "\"../p" + std::to_string(i) + "\";\n" : "";
    }
    writeProject("top", fan);
    EXPECT_EQ(load("top").imports().size(), static_cast<std::size_t>(kWidth));
    EXPECT_EQ(store.projects().size(), static_cast<std::size_t>(kLength + 1));
}

TEST_F(LoadProject, FindsTheNearestProjectFileAbove) {
    write("a/.vesk_project.txt", "");
    write("a/b/c/file", "");
    fs::create_directory(path("a/b/.vesk_project.txt"));
    EXPECT_EQ(findProjectFile(path("a/b/c")), path("a/.vesk_project.txt"));
    EXPECT_EQ(findProjectFile(path("")), std::nullopt);
}

}  // namespace
}  // namespace Vesk::test
