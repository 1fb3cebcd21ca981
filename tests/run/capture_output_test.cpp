#include "run/capture_output.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk {
namespace {

using test::TempDir;

TEST(CaptureOutput, IsTrimmedAndEmptyWithoutAProgram) {
    EXPECT_EQ(captureOutput(test::childProgram(), "print \" \t 12.2.0 x  \" \"\"", false),
              "12.2.0 x");
    EXPECT_EQ(captureOutput(platform::pathFromUtf8("no such/program"), "--version", true), "");
}

TEST(CaptureOutput, DiscardsErrorsWhenAsked) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(captureOutput(test::childProgram(), "print out noise", true), "out");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(captureOutput(test::childProgram(), "print out noise", false), "out");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "noise");
}

// What command interpreters treat specially in a program's path.
TEST(CaptureOutput, TakesProgramsFromAnyDirectory) {
    const TempDir dir;
    std::vector<std::string> directories{
        "Program Files (x86)", "a&b", "c@d", "e^f", "größe", "100%", "semi;colon", "it's"};
    if (!platform::kWindows) {
        directories.insert(directories.end(),
                           {"do$HOME", "back`tick", "quo\"te", "back\\slash", "a|b<c>"});
    }
    const std::string name = platform::kWindows ? "tool.exe" : "tool";
    for (const std::string& directory : directories) {
        std::filesystem::create_directories(dir / directory);
        const auto program = dir / directory / name;
        std::filesystem::copy_file(test::childProgram(), program);
        EXPECT_EQ(captureOutput(program, "print \"q r\" \"\"", true), "q r") << directory;
    }
}

}  // namespace
}  // namespace Vesk
