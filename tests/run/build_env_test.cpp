#include "build/run/build_env.h"

#include <gtest/gtest.h>

#include "base/console.h"
#include "base/exception.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/support.h"

namespace Vesk {
namespace {

using platform::environmentVariable;
using platform::setEnvironmentVariable;
using test::TempDir;

template <class Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const VeskException& error) {
        return error.message();
    }
    return "nothing was thrown";
}

class BuildEnvTest : public testing::Test {
  protected:
    void SetUp() override { console::setThreshold(console::level::kError); }
    void TearDown() override { console::setThreshold(console::kDefaultThreshold); }
};

TEST_F(BuildEnvTest, DerivesTheOutputDirectory) {
    const struct {
        BuildEnvSettings settings;
        std::string_view directory;
    } cases[] = {
        {{"", "", "/p", "out", ""}, "/p/out"},
        {{"", "", "/p", "", ""}, "/p/out"},
        {{"", "", "/p", "build", "debug"}, "/p/build/debug"},
        {{"", "bin/x/", "/p", "out", "debug"}, "/p/bin/x"},
        {{"", "../bin", "/p/q", "out", ""}, "/p/bin"},
        {{"", ".", "/p", "out", ""}, "/p"},
        {{"name", "", "", "out", ""}, "out"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(deriveOutputDirectory(c.settings).generic_string(), c.directory);
    }
    const TempDir dir;
    const BuildEnvSettings absolute{"", dir.text("elsewhere"), "/p", "out", ""};
    EXPECT_EQ(deriveOutputDirectory(absolute), dir / "elsewhere");
}

TEST_F(BuildEnvTest, RefusesMisuse) {
    BuildEnv env(std::filesystem::path{});
    EXPECT_EQ(messageOf([&] { env.setVariable("A", "1"); }),
              "Cannot modify the process environment before the build environment is prepared.");
    EXPECT_EQ(messageOf([&] { env.prepare(0); }),
              "Cannot prepare a build environment without jobs.");
    EXPECT_FALSE(env.prepared());
    env.prepare(3);
    EXPECT_EQ(env.jobCount(), 3U);
    EXPECT_EQ(messageOf([&] { env.prepare(3); }), "Build environment is already prepared.");
    EXPECT_EQ(messageOf([&] { env.prepare(0); }), "Build environment is already prepared.");
    env.restore();
    env.prepare(1);
    EXPECT_TRUE(env.prepared());
}

TEST_F(BuildEnvTest, CreatesAndNamesTheOutputDirectory) {
    const TempDir dir;
    console::setThreshold(console::kDefaultThreshold);
    testing::internal::CaptureStdout();
    BuildEnv env(dir / "a/b");
    env.prepare(1);
    console::flush();
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("Output dir: " + platform::pathToUtf8(dir / "a/b")), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_directory(dir / "a/b"));
}

TEST_F(BuildEnvTest, NamesADirectoryThatCannotBeCreated) {
    const TempDir dir;
    test::write(dir / "file", "x");
    BuildEnv env(dir / "file/sub");
    try {
        env.prepare(1);
        FAIL();
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_NE(std::string(error.what()).find("create_directories"), std::string::npos);
        EXPECT_EQ(error.path1(), dir / "file/sub");
    }
    EXPECT_FALSE(env.prepared());
}

TEST_F(BuildEnvTest, RestoresWhatItChanged) {
    setEnvironmentVariable("VESK_TEST_OLD", "before");
    setEnvironmentVariable("VESK_TEST_BLANK", "");
    {
        BuildEnv env(std::filesystem::path{});
        env.prepare(1);
        env.setVariable("VESK_TEST_OLD", "first");
        env.setVariable("VESK_TEST_OLD", "größe \"2\"");
        env.setVariable("VESK_TEST_BLANK", "x");
        env.setVariable("VESK_TEST_NEW", "new");
        EXPECT_EQ(environmentVariable("VESK_TEST_OLD"), "größe \"2\"");
        env.restore();
        EXPECT_EQ(environmentVariable("VESK_TEST_OLD"), "before");
        EXPECT_EQ(environmentVariable("VESK_TEST_BLANK"), "");
        EXPECT_EQ(environmentVariable("VESK_TEST_NEW"), std::nullopt);

        env.prepare(1);
        env.setVariable("VESK_TEST_OLD", "again");
    }
    EXPECT_EQ(environmentVariable("VESK_TEST_OLD"), "before") << "the destructor restores too";
    platform::removeEnvironmentVariable("VESK_TEST_OLD");
    platform::removeEnvironmentVariable("VESK_TEST_BLANK");
}

TEST_F(BuildEnvTest, ReportsVariablesThatTheSystemRefuses) {
    BuildEnv env(std::filesystem::path{});
    env.prepare(1);
    EXPECT_EQ(messageOf([&] { env.setVariable("A=B", "x"); }),
              "Unable to set process environment variable 'A=B'");
    setEnvironmentVariable("VESK_TEST_GONE", "kept");
    env.setVariable("VESK_TEST_GONE", "changed");
    testing::internal::CaptureStderr();
    env.restore();
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "Unable to restore process environment variable 'A=B'."),
              std::string::npos);
    EXPECT_EQ(environmentVariable("VESK_TEST_GONE"), "kept") << "the others are still restored";
    platform::removeEnvironmentVariable("VESK_TEST_GONE");
}

}  // namespace
}  // namespace Vesk
