#include "platform/environment.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace Vesk::platform {
namespace {

TEST(Environment, TellsUnsetFromEmpty) {
    EXPECT_EQ(environmentVariable("VESK_TEST_UNSET"), std::nullopt);
    ASSERT_TRUE(setEnvironmentVariable("VESK_TEST_EMPTY", ""));
    EXPECT_EQ(environmentVariable("VESK_TEST_EMPTY"), "");
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(removeEnvironmentVariable("VESK_TEST_EMPTY"));
        EXPECT_EQ(environmentVariable("VESK_TEST_EMPTY"), std::nullopt);
    }
}

TEST(Environment, KeepsLongAndForeignValues) {
    for (const std::string& value : {std::string("größe = \"1\" 漢字 🙂"),
                                     std::string(256, 'b'), std::string(20'000, 'd')}) {
        ASSERT_TRUE(setEnvironmentVariable("VESK_TEST_VALUE", value));
        EXPECT_EQ(environmentVariable("VESK_TEST_VALUE"), value);
        const auto entries = environmentEntries();
        EXPECT_EQ(std::ranges::count(entries, "VESK_TEST_VALUE=" + value), 1);
    }
    removeEnvironmentVariable("VESK_TEST_VALUE");
}

TEST(Environment, RefusesNamesThatAreNone) {
    for (const std::string& name : {std::string(), std::string("A=B"), std::string("A\0B", 3)}) {
        EXPECT_FALSE(setEnvironmentVariable(name, "x"));
    }
    EXPECT_FALSE(setEnvironmentVariable("VESK_TEST_ZERO", std::string("a\0b", 3)));
}

}  // namespace
}  // namespace Vesk::platform
