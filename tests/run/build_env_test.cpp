#include "run/build_env.h"

#include <gtest/gtest.h>

#include "base/console.h"
#include "base/exception.h"
#include "platform/environment.h"
#include "platform/files.h"

namespace Vesk {
namespace {

using platform::environmentVariable;
using platform::setEnvironmentVariable;

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
        {{"", "", "/p", "build", "debug"}, "/p/build/debug"},
        {{"", "bin/x/", "/p", "out", "debug"}, "/p/bin/x"},
        {{"", "../bin", "/p/q", "out", ""}, "/p/bin"},
        {{"name", "", "", "out", ""}, "out"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(deriveOutputDirectory(c.settings).generic_string(), c.directory);
    }
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
