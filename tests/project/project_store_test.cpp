#include "project/project_store.h"

#include "project/workspace.h"

namespace Vesk::test {
namespace {

class Store : public Workspace {
  protected:
    Project& add(const std::string& relative, const std::string& name) {
        auto project = std::make_unique<Project>();
        project->file = relative.empty() ? std::filesystem::path() : path(relative);
        project->name = name;
        return store.addProject(std::move(project));
    }
};

TEST_F(Store, ChecksProjects) {
    write("a.txt", "");
    write("b.txt", "");
    EXPECT_EQ(failureOf([&] { add("", "p"); }), "Project path is empty.");
    EXPECT_EQ(failureOf([&] { add("gone", "p"); }), "Project path is not a file: <ws>/gone");
    const Project& first = add("a.txt", "p");
    EXPECT_EQ(failureOf([&] { add("b.txt", "p"); }),
              "Duplicate project name 'p': <ws>/a.txt versus <ws>/b.txt");
    EXPECT_EQ(store.findProject("p"), &first);
    EXPECT_EQ(store.findProject("P"), nullptr);
}

TEST_F(Store, ChecksStandaloneUnits) {
    const char* second = "A ProjectStore can hold only one standalone unit.";
    write("my unit.txt", "all : { }");
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit({}, path("")); }),
              "Standalone unit path is empty.");
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit(path("gone.txt"), path("")); }),
              "Standalone unit path is not a file: <ws>/gone.txt");
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit(path("my unit.txt"), path("gone")); }),
              "Standalone root is not a directory: <ws>/gone");
    const auto unit = std::make_shared<Unit>();
    EXPECT_EQ(failureOf([&] { store.addPreparedStandaloneUnit(unit, path("")); }),
              "A prepared standalone unit requires a name.");

    const Project& project = store.addStandaloneUnit(path("my unit.txt"), path(""));
    EXPECT_TRUE(project.standalone());
    EXPECT_EQ(project.mainUnit()->name, "my unit") << "named after the file";
    EXPECT_EQ(project.root, path(""));
    unit->name = kCommandLineUnit;
    EXPECT_EQ(failureOf([&] { store.addPreparedStandaloneUnit(unit, path("")); }), second);
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit(path("my unit.txt"), path("")); }), second);
}

}  // namespace
}  // namespace Vesk::test
