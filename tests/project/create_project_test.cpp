#include "project/create_project.h"

#include "grammar/identifier.h"
#include "project/unit_file_walk.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

class CreateProject : public Workspace {};

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
