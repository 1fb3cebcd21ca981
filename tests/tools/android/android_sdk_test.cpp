// Which versions of an SDK's parts are chosen.

#include "tools/android/android_sdk.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "base/exception.h"
#include "platform/system.h"
#include "tools/android/apk_package.h"
#include "tools/scratch_folder.h"

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

class InstalledSdk : public testing::Test {
  protected:
    InstalledSdk() {
        for (const char* version : {"9.0.0", "34.0.0", "34.1.0-rc1", "debian"}) {
            const std::string folder = std::string("build-tools/") + version;
            folder_.write(folder + "/aapt2" + (platform::kWindows ? ".exe" : ""), "");
            folder_.write(folder + "/lib/apksigner.jar", "");
        }
        folder_.write("build-tools/99.0.0/zipalign", "half removed");
        for (const char* version : {"android-9", "android-34", "android-34-ext8", "sources"}) {
            folder_.write(std::string("platforms/") + version + "/android.jar", "");
        }
    }

    std::string buildTools(std::string_view asked) const {
        const AndroidSdk sdk = installed();
        const SdkPart* part = sdk.findBuildTools(asked);
        return part == nullptr ? "none" : part->version;
    }
    std::string platform(std::string_view asked) const {
        const AndroidSdk sdk = installed();
        const SdkPart* part = sdk.findPlatform(asked);
        return part == nullptr ? "none" : part->version;
    }
    AndroidSdk installed() const { return AndroidSdk(folder_.path()); }

    ScratchFolder folder_;
};

TEST_F(InstalledSdk, VersionsByWhatIsAsked) {
    EXPECT_EQ(buildTools(""), "34.1.0-rc1");
    EXPECT_EQ(buildTools("34"), "34.1.0-rc1");
    EXPECT_EQ(buildTools("34.0"), "34.0.0");
    EXPECT_EQ(buildTools("9.0.0"), "9.0.0");
    EXPECT_EQ(buildTools("debian"), "debian");
    EXPECT_EQ(buildTools("3"), "none");
    EXPECT_EQ(buildTools("99.0.0"), "none");
    EXPECT_EQ(buildTools("bookworm"), "none");
    EXPECT_EQ(platform(""), "34");
    EXPECT_EQ(platform("android-9"), "9");
    EXPECT_EQ(platform("34-ext8"), "34-ext8");
    EXPECT_EQ(platform("3"), "none");
}

TEST_F(InstalledSdk, TellsWhatThereIs) {
    const auto failure = [](const auto& act) -> std::string {
        try {
            act();
        } catch (const VeskException& error) {
            return error.message();
        }
        return "none";
    };
    EXPECT_EQ(failure([this] { installed().requirePlatform("10"); }),
              "The Android SDK in '" + folder_.path() +
                  "' has no platform that fits platform_version '10'. There are: 34, 34-ext8, 9. "
                  "Choose one of them, or install what is asked for.");
    EXPECT_EQ(
        failure([this] { AndroidSdk(folder_.path() + "/x").requireBuildTools(""); }),
        "The Android SDK in '" + folder_.path() +
            "/x' has no usable build tools in its folder 'build-tools'. Install them, for "
            "example with sdkmanager \"build-tools;34.0.0\", or correct toolchain_path of the "
            "tool.");
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
