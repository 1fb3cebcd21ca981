// Symbolic links, which not every Windows account may make.
#include "base/exception.h"
#include "platform/files.h"
#include "project/unit_file_walk.h"
#include "project/workspace.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

class Links : public Workspace {
  protected:
    std::string found(const std::string& directory) {
        std::string text;
        for (const fs::path& file : findUnitFiles(path(directory))) {
            text += file.lexically_relative(path(directory)).generic_string() + "\n";
        }
        return text;
    }
};

TEST_F(Links, AreFollowedOnceAndNeverUpwards) {
    write("p/real/vesk.txt", "");
    write("p/real/deeper/vesk.txt", "");
    write("elsewhere/vesk.txt", "");
    write("vesk.txt", "");
    fs::create_directory_symlink(path("p/real"), path("p/again"));
    fs::create_directory_symlink(path("p"), path("p/real/loop"));
    fs::create_directory_symlink(path(""), path("p/above"));
    fs::create_directory_symlink(path("elsewhere"), path("p/linked"));
    fs::create_directory_symlink(path("gone"), path("p/dangling"));
    fs::create_symlink(path("gone"), path("p/vesk.txt"));
    EXPECT_EQ(found("p"), "real/vesk.txt\nreal/deeper/vesk.txt\nlinked/vesk.txt\n");
}

TEST_F(Links, LeadToOneProject) {
    const auto project = [this](const std::string& name, const std::string& imports) {
        write(name + "/" + kProjectFileName,
              "name " + name + " import { " + imports + " } units { main { \"vesk.txt\" } }");
        write(name + "/vesk.txt", "unit main\n");
    };
    project("base", "");
    project("mid", "\"../base-link\";");
    project("top", "\"../base\"; \"../mid\";");
    fs::create_directory_symlink(path("base"), path("base-link"));
    fs::create_directory_symlink(path("top"), path("entry"));
    ProjectStore store;
    ProjectLoader loader(
        store, [this] { return &registry; }, [](std::string_view) { return true; });
    Project& top = loader.loadRoot(path("entry"));
    loader.loadImports(top, "");
    EXPECT_EQ(top.root, path("top"));
    EXPECT_EQ(store.projects().size(), 3U);
}

TEST_F(Links, StayWhenTheRegistryIsWritten) {
    write("settings/registry", "projects { a \"/a\" }");
    fs::permissions(path("settings/registry"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(path("settings/registry"), path(kRegistryFileName));
    outputOf([&] {
        updateRegistry(path(kRegistryFileName),
                       [](Registry& shared) { shared.registerProject("b", "/b"); });
    });
    EXPECT_TRUE(fs::is_symlink(path(kRegistryFileName)));
    EXPECT_EQ(read("settings/registry"), "projects {\n  a \"/a\"\n  b \"/b\"\n}\n");
    EXPECT_EQ(fs::status(path("settings/registry")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Links, LetAFullDiskLeaveTheRegistryAsItWas) {
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "no device that is always full";
    }
    write(kRegistryFileName, "projects { a \"/a\" }");
    fs::create_symlink("/dev/full", path(std::string(kRegistryFileName) + ".tmp"));
    const std::string failure = failureOf([&] {
        updateRegistry(path(kRegistryFileName),
                       [](Registry& shared) { shared.registerProject("b", "/b"); });
    });
    EXPECT_THAT(failure,
                ::testing::StartsWith("Unable to write registry file: <ws>/.vesk_registry.txt\n"));
    EXPECT_EQ(read(kRegistryFileName), "projects { a \"/a\" }");
}

}  // namespace
}  // namespace Vesk::test
