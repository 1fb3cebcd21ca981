// The order of versions, and the machines of libraries.

#include "tools/android/android_sdk.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "tools/android/apk_package.h"

namespace Vesk::test {
namespace {

TEST(AndroidSdk, NewestFirst) {
    const std::vector<std::string> expected = {
        "100", "36.1", "36", "34.0.0", "34.0.0-rc10", "34.0.0-rc9", "9", "debian", "Tiramisu"};
    std::vector<std::string> versions = expected;
    std::ranges::reverse(versions);
    std::ranges::sort(versions, [](const std::string& a, const std::string& b) {
        return isNewerSdkVersion(a, b);
    });
    EXPECT_EQ(versions, expected);
}

TEST(NativeLibraries, AbiOfElfHeaders) {
    const auto header = [](char wordSize, char order, char type, unsigned char machine) {
        std::string bytes(
            "\x7F"
            "ELF");
        bytes += {wordSize, order, 1};
        bytes.append(9, '\0');
        bytes += {type, 0, static_cast<char>(machine), 0};
        return bytes;
    };
    EXPECT_EQ(abiOf(header(2, 1, 3, 183)), "arm64-v8a");
    EXPECT_EQ(abiOf(header(1, 1, 3, 40)), "armeabi-v7a");
    EXPECT_EQ(abiOf(header(1, 1, 3, 3)), "x86");
    EXPECT_EQ(abiOf(header(2, 1, 3, 62)), "x86_64");
    EXPECT_EQ(abiOf(header(2, 1, 3, 243)), "riscv64");
    EXPECT_EQ(abiOf(header(1, 1, 3, 62)), "");   // x32
    EXPECT_EQ(abiOf(header(2, 2, 3, 183)), "");  // big-endian
    EXPECT_EQ(abiOf(header(2, 1, 2, 62)), "");   // a program
    EXPECT_EQ(abiOf(header(2, 1, 3, 62).substr(0, 19)), "");
    EXPECT_EQ(abiOf(""), "");
}

}  // namespace
}  // namespace Vesk::test
