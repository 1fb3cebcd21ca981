#include <gtest/gtest.h>

#include "platform/system.h"
#include "tools/discovery/triple.h"
#include "tools/discovery/version.h"

namespace Vesk::test {
namespace {

TEST(Version, LeadingDigitsAndDots) {
    EXPECT_EQ(leadingVersion("12.2.0"), "12.2.0");
    EXPECT_EQ(leadingVersion("12-posix"), "12");
    EXPECT_EQ(leadingVersion("14.0.6-1ubuntu"), "14.0.6");
    EXPECT_EQ(leadingVersion("3.\n"), "3");
    EXPECT_EQ(leadingVersion("clang"), "");
}

TEST(Version, PartsAreNumbers) {
    EXPECT_TRUE(compareVersions("9", "12") < 0);
    EXPECT_TRUE(compareVersions("12.10", "12.9") > 0);
    EXPECT_TRUE(compareVersions("12", "12.0.0") == 0);
    EXPECT_TRUE(compareVersions("12.0.1", "12") > 0);

    EXPECT_TRUE(versionFits("12.2.0", "12"));
    EXPECT_TRUE(versionFits("12.2.0", "12.2"));
    EXPECT_TRUE(versionFits("12.2.0", "12.2.0"));
    EXPECT_FALSE(versionFits("12.2.0", "1"));
    EXPECT_FALSE(versionFits("12.2.0", "12.20"));
    EXPECT_FALSE(versionFits("12", "12.2"));
}

TEST(Triple, WhatAUserMayCallIt) {
    const char* mingw = "x86_64-w64-mingw32";
    for (const char* asked :
         {"x86_64-w64-mingw32", "mingw32", "MinGW32", "w64", "x86_64", "windows"}) {
        EXPECT_TRUE(tripleFits(mingw, asked)) << asked;
    }
    for (const char* asked : {"", "mingw", "linux", "x86_64-w64", "aarch64"}) {
        EXPECT_FALSE(tripleFits(mingw, asked)) << asked;
    }
    for (const auto& [triple, asked] :
         {std::pair("i686-pc-windows-msvc", "x86"), std::pair("aarch64-pc-windows-msvc", "ARM64"),
          std::pair("x86_64-pc-windows-msvc", "x64")}) {
        EXPECT_TRUE(tripleFits(triple, asked)) << asked;
        EXPECT_EQ(tripleFits(triple, "amd64"), std::string_view(asked) == "x64");
    }
    EXPECT_EQ(tripleFits(mingw, "native"), platform::kWindows);
    EXPECT_EQ(tripleFits("x86_64-linux-gnu", "native"), !platform::kWindows);
    EXPECT_EQ(tripleOfPrefix("arm-none-eabi-"), "arm-none-eabi");
    EXPECT_EQ(tripleOfPrefix(""), "");
}

TEST(Triple, WhatThisMachineRuns) {
    EXPECT_TRUE(isNativeTriple(""));
    EXPECT_TRUE(isNativeTriple(nativeTriple()));
    EXPECT_EQ(isNativeTriple("x86_64-pc-windows-msvc"), platform::kWindows);
    EXPECT_EQ(isNativeTriple("x86_64-pc-linux-gnu"), !platform::kWindows);
    for (const char* foreign : {"arm-none-eabi", "riscv64-linux-gnu", "i686-w64-mingw32", "avr",
                                "x86_64-linux-musl", "aarch64-linux-android21"}) {
        EXPECT_FALSE(isNativeTriple(foreign)) << foreign;
    }
}

}  // namespace
}  // namespace Vesk::test
