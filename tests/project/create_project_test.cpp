#include "project/create_project.h"

#include "project/identifier.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

using ::testing::HasSubstr;
namespace fs = std::filesystem;

class CreateProject : public Workspace {
  protected:
    /// The project file that is written for the directory.
    std::string created(const std::string& directory) {
        outputOf([&] {
            createProjectFile(describeNewProject(path(directory), path(directory)),
                              path(directory));
        });
        return read(directory + "/.vesk_project.txt");
    }

    /// "unit: target target" of each unit that the project file gives.
    std::string loadedFrom(const std::string& directory) {
        std::string text;
        for (const auto& unit : load(directory).units()) {
            text += unit->name + ":";
            for (const std::string& target : unit->targetNames()) {
                text += " " + target;
            }
            text += "\n";
        }
        return text;
    }
};

TEST_F(CreateProject, ListsEveryUnitFileUnderAName) {
    write("my app/vesk.txt", "start : { }");
    write("my app/lib/Vesk.TXT", "unit core a : { }");
    write("my app/net/lib/vesk.txt", "b : { }");
    write("my app/units/vesk.txt", "c : { }");
    write("my app/\xC3\xBC 7/vesk.txt", "d : { }");
    write("my app/more/core/vesk.txt", "e : { }");
    write("my app/more/vesk.txt", "unit core f : { }");
    write("my app/other/vesk.txt.old", "broken");
    write("my app/out/vesk.txt", "unit generated");
    write("my app/deep/out/vesk.txt", "g : { }");
    EXPECT_EQ(created("my app"),
              "name my_app\n"
              "units\n{\n"
              "__7\n{\n  \"\xC3\xBC 7/vesk.txt\"\n}\n"
              "core\n{\n  \"lib/Vesk.TXT\"\n  \"more/vesk.txt\"\n}\n"
              "generated\n{\n  \"out/vesk.txt\"\n}\n"
              "lib\n{\n  \"net/lib/vesk.txt\"\n}\n"
              "more_core\n{\n  \"more/core/vesk.txt\"\n}\n"
              "my_app\n{\n  \"vesk.txt\"\n}\n"
              "out\n{\n  \"deep/out/vesk.txt\"\n}\n"
              "units_\n{\n  \"units/vesk.txt\"\n}\n"
              "}\n");
    EXPECT_EQ(
        loadedFrom("my app"),
        "__7: d\ncore: a f\ngenerated:\nlib: b\nmore_core: e\nmy_app: start\nout: g\nunits_: c\n");
}

TEST_F(CreateProject, GivesUnitsOfOneNameMoreOfTheirPath) {
    for (const char* file : {"p/a/x/vesk.txt", "p/b/x/vesk.txt", "p/x/vesk.txt", "p/a_x/vesk.txt",
                             "p/p/vesk.txt", "p/vesk.txt"}) {
        write(file, "t : { }");
    }
    created("p");
    EXPECT_EQ(loadedFrom("p"), "a_x: t\nb_x: t\np: t\np_2: t\nx: t\nx_2: t\n");
}

TEST_F(CreateProject, LeavesOutWhatCouldNotBeLoadedButNotWhatHasErrors) {
    write("p/a/vesk.txt", "unit u t : { }");
    write("p/vesk.txt", "unit u t : { }");
    write("p/c/vesk.txt", "t : {");
    EXPECT_THAT(outputOf([&] { describeNewProject(path("p"), path("p")); }),
                ::testing::AllOf(
                    HasSubstr("Unit file 'a/vesk.txt' is left out: unit 'u' already has a target "
                              "'t' in 'vesk.txt'; give one of the two units another name.\n"),
                    HasSubstr("Unit file 'c/vesk.txt' is listed, but it has errors.\n  ")));
    EXPECT_THAT(created("p"), HasSubstr("c\n{\n  \"c/vesk.txt\"\n}\n"));
    write("p/c/vesk.txt", "");
    EXPECT_EQ(loadedFrom("p"), "c:\nu: t\n");
}

TEST_F(CreateProject, KeepsEveryOldProjectFile) {
    write(".vesk_project.txt", "first");
    EXPECT_EQ(outputOf([&] {
                  createProjectFile({"a", {}}, path(""));
              }),
              "The old project file is kept as '<ws>/.vesk_project.txt.bak'.\n"
              "Created file '<ws>/.vesk_project.txt'.\n");
    outputOf([&] { createProjectFile({"b", {}}, path("")); });
    EXPECT_EQ(read(".vesk_project.txt.bak"), "first");
    EXPECT_EQ(read(".vesk_project.txt.bak2"), "name a\nunits\n{\n}\n");
    EXPECT_EQ(read(".vesk_project.txt"), "name b\nunits\n{\n}\n");
}

TEST_F(CreateProject, FailsWhereNothingCanBeWritten) {
    EXPECT_THAT(
        failureOf([&] {
            createProjectFile({"p", {}}, path("gone"));
        }),
        ::testing::StartsWith("Unable to write project file: <ws>/gone/.vesk_project.txt\n"));
    EXPECT_THROW(findUnitFiles(path("gone")), fs::filesystem_error);
}

TEST(Identifiers, AreMadeOfAnyText) {
    const std::pair<const char*, const char*> cases[] = {
        {"lib", "lib"},        {"", "_"},           {"7z", "_7z"},
        {"a b.c", "a_b_c"},    {"units", "units_"}, {"\xC3\xBC\xC3\xBC", "__"},
        {"\xE7\x95\x8C", "_"},
    };
    for (const auto& [text, identifier] : cases) {
        EXPECT_EQ(identifierFrom(text), identifier) << text;
        EXPECT_TRUE(isIdentifier(identifier)) << identifier;
        EXPECT_EQ(isIdentifier(text), std::string(text) == identifier) << text;
    }
}

}  // namespace
}  // namespace Vesk::test
