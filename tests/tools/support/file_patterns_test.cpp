#include "tools/support/file_patterns.h"

#include <gtest/gtest.h>

#include "base/exception.h"
#include "platform/files.h"
#include "tools/scratch_directory.h"

namespace Vesk::test {
namespace {

class Patterns : public testing::Test {
  protected:
    Patterns() {
        for (const char* file :
             {"src/b.c", "src/a.c", "src/a.h", "src/.hidden.c", "src/sub/c.c", "src/sub/deep/d.c",
              "src/sub/deep/main.c", "src/.git/e.c", "src/out/f.c", "größe/ä.c", "main.c"}) {
            directory_.write(file, "");
        }
    }

    /// What a pattern below the directory meets, names separated by blanks.
    std::string found(const std::string& pattern, const char* skipped = "/none") {
        std::string names;
        const std::string root = directory_.path();
        for (const std::string& file : filesMatching(root + "/" + pattern, root + skipped)) {
            names += (names.empty() ? "" : " ") + file.substr(root.size() + 1);
            EXPECT_TRUE(pathMatches(file, root + "/" + pattern)) << file;
        }
        return names;
    }

    ScratchDirectory directory_;
};

TEST_F(Patterns, MeetFilesInOrder) {
    EXPECT_EQ(found("src/*.c"), "src/a.c src/b.c");
    EXPECT_EQ(found("src/.*.c"), "src/.hidden.c");
    EXPECT_EQ(found("s*/?.?"), "src/a.c src/a.h src/b.c");
    EXPECT_EQ(found("*/?.c"), "größe/ä.c src/a.c src/b.c");
    EXPECT_EQ(found("src/*/c.c"), "src/sub/c.c");
    EXPECT_EQ(found("*"), "main.c");
    EXPECT_EQ(found("src/*.cpp"), "");
    EXPECT_EQ(found("nowhere/*.c"), "");
    EXPECT_EQ(found("main.c/*.c"), "");
}

TEST_F(Patterns, AnyNumberOfDirectories) {
    const char* all =
        "src/a.c src/b.c src/out/f.c src/sub/c.c src/sub/deep/d.c "
        "src/sub/deep/main.c";
    EXPECT_EQ(found("src/**/*.c"), all);
    EXPECT_EQ(found("src/**/**/*.c"), all);
    EXPECT_EQ(found("src/**/*.c", "/src/out"),
              "src/a.c src/b.c src/sub/c.c src/sub/deep/d.c src/sub/deep/main.c");
    EXPECT_EQ(found("**/main.c"), "main.c src/sub/deep/main.c");
    EXPECT_EQ(found("src/**/deep/*.c"), "src/sub/deep/d.c src/sub/deep/main.c");
    EXPECT_EQ(found("src/sub/**"), "src/sub/c.c src/sub/deep/d.c src/sub/deep/main.c");
}

TEST_F(Patterns, LinksAreNotFollowedRoundAndRound) {
    std::error_code error;
    std::filesystem::create_directory_symlink(directory_.path() + "/src",
                                              directory_.path() + "/src/sub/up", error);
    if (error) {
        GTEST_SKIP() << "no links here";
    }
    EXPECT_EQ(found("src/sub/**/*.c"), "src/sub/c.c src/sub/deep/d.c src/sub/deep/main.c");
    EXPECT_EQ(found("src/sub/up/?.c"), "src/sub/up/a.c src/sub/up/b.c");
}

TEST(PatternText, AgainstPaths) {
    EXPECT_TRUE(isPattern("a*"));
    EXPECT_TRUE(isPattern("a?"));
    EXPECT_FALSE(isPattern("a[b].c"));
    EXPECT_TRUE(pathMatches("/p/a/b/x_test.c", "/p/**/*_test.c"));
    EXPECT_TRUE(pathMatches("/p/aXbXc", "/p/a*b*c"));
    EXPECT_FALSE(pathMatches("/p/aXbX", "/p/a*b*c"));
    EXPECT_FALSE(pathMatches("/p/a/b.c", "/p/*.c"));
    EXPECT_FALSE(pathMatches("/p/b.c", "/p/b.c/**/x"));
}

}  // namespace
}  // namespace Vesk::test
