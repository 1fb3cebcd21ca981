#include "project/project_store.h"

#include "project/workspace.h"

namespace Vesk::test {
namespace {

class Store : public Workspace {
  protected:
    std::unique_ptr<Project> projectAt(const std::string& relative, const std::string& name) {
        auto project = std::make_unique<Project>();
        project->file = relative.empty() ? std::filesystem::path() : path(relative);
        project->name = name;
        return project;
    }
};

TEST_F(Store, ChecksProjects) {
    write("a.txt", "");
    write("b.txt", "");
    EXPECT_EQ(failureOf([&] { store.addProject(projectAt("", "p")); }), "Project path is empty.");
    EXPECT_EQ(failureOf([&] { store.addProject(projectAt("gone", "p")); }),
              "Project path is not a file: <ws>/gone");
    Project& first = store.addProject(projectAt("a.txt", "p"));
    EXPECT_EQ(failureOf([&] { store.addProject(projectAt("b.txt", "p")); }),
              "Duplicate project name 'p': <ws>/a.txt versus <ws>/b.txt");
    EXPECT_EQ(store.findProject("p"), &first);
    EXPECT_EQ(store.findProject("P"), nullptr);
}

TEST_F(Store, ReadsAStandaloneUnit) {
    write("some where/my unit.txt", "all : { }");
    const Project& project = store.addStandaloneUnit(path("some where/my unit.txt"), path(""));
    EXPECT_TRUE(project.standalone());
    EXPECT_EQ(project.name, "my unit") << "named after the file";
    EXPECT_EQ(project.mainUnit()->name, "my unit");
    EXPECT_EQ(project.root, path(""));
    EXPECT_EQ(store.standaloneUnit(), &project);
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit(path("some where/my unit.txt"), path("")); }),
              "A ProjectStore can hold only one standalone unit.");
}

TEST_F(Store, TakesTheNameOfAUnitLine) {
    write("vesk.txt", "unit mine all : { }");
    EXPECT_EQ(store.addStandaloneUnit(path("vesk.txt"), path("")).name, "mine");
}

TEST_F(Store, ChecksStandaloneUnits) {
    write("vesk.txt", "all : { }");
    const auto unit = std::make_shared<Unit>();
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit({}, path("")); }),
              "Standalone unit path is empty.");
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit(path("gone.txt"), path("")); }),
              "Standalone unit path is not a file: <ws>/gone.txt");
    EXPECT_EQ(failureOf([&] { store.addStandaloneUnit(path("vesk.txt"), path("gone")); }),
              "Standalone root is not a directory: <ws>/gone");
    EXPECT_EQ(failureOf([&] { store.addPreparedStandaloneUnit(unit, path("")); }),
              "A prepared standalone unit requires a name.");
    unit->name = kCommandLineUnit;
    const Project& project = store.addPreparedStandaloneUnit(unit, path(""));
    EXPECT_EQ(project.mainUnit(), unit);
    EXPECT_EQ(failureOf([&] { store.addPreparedStandaloneUnit(unit, path("")); }),
              "A ProjectStore can hold only one standalone unit.");
}

TEST_F(Store, KeepsAddressesWhenItMoves) {
    write("a.txt", "");
    write("vesk.txt", "");
    const Project& project = store.addProject(projectAt("a.txt", "zebra"));
    const Project& standalone = store.addStandaloneUnit(path("vesk.txt"), path(""));
    const ProjectStore moved = std::move(store);
    EXPECT_THAT(moved.projects(), ::testing::ElementsAre(&project, &standalone));
}

}  // namespace
}  // namespace Vesk::test
