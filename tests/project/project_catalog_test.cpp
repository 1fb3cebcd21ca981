#include "project/project_catalog.h"

#include "platform/files.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

struct Reference {
    const char* text;      ///< as in a dependency
    const char* expected;  ///< project/unit::target, or the failure
};

/// Project "app" imports "lib" as "mylib"; both have the units "main" and "more".
class Locate : public Workspace, public ::testing::WithParamInterface<Reference> {
  protected:
    static constexpr const char* kImports =
        " import { \"../lib\" mylib; a: \"../lib\" some; b: \"../lib\" some; }";

    void SetUp() override {
        for (const std::string name : {"app", "lib"}) {
            const bool isApp = name == "app";
            write(name + "/.vesk_project.txt",
                  "name " + name + (isApp ? kImports : "") +
                      " units { main { \"main.txt\" } more { \"more.txt\" } empty { \"e.txt\" } }" +
                      (isApp ? " profiles { a { } b { } }" : ""));
            write(name + "/main.txt", "first : { } all : { }");
            write(name + "/more.txt", "all : { } only_" + name + " : { }");
            write(name + "/e.txt", "");
        }
    }

    static std::string textOf(const TargetLocation& location) {
        return location.project->name + "/" + location.unit->name + "::" + location.target->name;
    }
};

TEST_P(Locate, FindsWhatAReferenceMeans) {
    const Project& app = load("app");
    const ProjectCatalog catalog(std::move(store), Context(), Context());
    const auto reference = splitDependencyString(GetParam().text);
    std::string found;
    const std::string failure =
        failureOf([&] { found = textOf(catalog.locate(reference, app, *app.findUnit("more"))); });
    EXPECT_EQ(found + failure, GetParam().expected);
}

constexpr Reference kReferences[] = {
    {"all", "app/more::all"},
    {"main::all", "app/main::all"},
    {"mylib/more::only_lib", "lib/more::only_lib"},
    {"lib/more::only_lib", "lib/more::only_lib"},
    {"mylib/1::first", "lib/main::first"},
    {"app/more::only_app", "app/more::only_app"},
    {"first", "Target 'more::first' not found."},
    {"onli_app", "Target 'more::onli_app' not found.\n  did you mean 'only_app'?"},
    {"maim::all", "Unit 'maim' not found.\n  did you mean 'main'?"},
    {"mylub/more::all", "Project 'mylub' not found.\n  did you mean 'mylib'?"},
    {"some/more::all", "Project 'some' not found.\n  it is imported with profile 'a' or 'b' only"},
};

INSTANTIATE_TEST_SUITE_P(Catalog, Locate, ::testing::ValuesIn(kReferences));

}  // namespace
}  // namespace Vesk::test
