// Files that are not there, not text, or not meant for vesk.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "grammar/loaders.h"
#include "grammar/text_files.h"
#include "platform/system.h"
#include "support/console_capture.h"

namespace Vesk {
namespace {

class SourceFiles : public LoaderTest {
  protected:
    std::string unitError(const std::filesystem::path& path) const {
        return errorOf([&] { parseUnitFile(path); });
    }
    std::string textError(std::string_view bytes) const {
        return unitError(write("vesk.txt", bytes));
    }
};

TEST_F(SourceFiles, ThatAreMissingAreNamed) {
    EXPECT_TRUE(
        unitError(directory_ / "no.txt").starts_with("Unable to open file! 'DIR/no.txt': "));
    EXPECT_EQ(errorOf([&] { parseProjectFile(directory_ / "no.txt"); }),
              "Project file 'DIR/no.txt' not found.");
    EXPECT_EQ(errorOf([&] { parseRegistryFile(directory_ / "no.txt"); }),
              "Registry file 'DIR/no.txt' not found.");
}

TEST_F(SourceFiles, ThatAreDirectoriesAreRefused) {
    EXPECT_EQ(unitError(directory_), "Unable to open file! 'DIR': it is a directory, not a file.");
    EXPECT_EQ(errorOf([&] { parseProjectFile(directory_); }),
              "Project file 'DIR' not found. It cannot be read: it is a directory, not a file.");
}

TEST_F(SourceFiles, ThatAreTooLargeAreRefused) {
    const auto path = write("vesk.txt", "");
    std::filesystem::resize_file(path, kMaxFileBytes + 1);
    EXPECT_EQ(unitError(path),
              "Unable to open file! 'DIR/vesk.txt': it is larger than 32 MiB, so it is not a file "
              "written for vesk.");
}

TEST_F(SourceFiles, ThatMayNotBeReadSaySo) {
    const auto path = write("vesk.txt", "");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    const std::string error = unitError(path);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    if (platform::kWindows || error == "no error") {
        GTEST_SKIP() << "who runs the tests may read everything";
    }
    EXPECT_EQ(error, "Unable to open file! 'DIR/vesk.txt': Permission denied.");
}

TEST_F(SourceFiles, ThatAreNoTextAreRefusedWithThePlace) {
    const std::string nul("a: {}\n\xC3\xA4 \0", 10);
    EXPECT_EQ(
        textError(nul),
        "DIR/vesk.txt(2,2): a NUL byte: this is not a text file, or one saved as UTF-16. Save "
        "the file as UTF-8.");
    EXPECT_EQ(textError("\xFF\xFE"),
              "DIR/vesk.txt(1,0): the byte 0xFF is not UTF-8 here. Save the file as UTF-8.");
    // Cut short, over-long, a surrogate, beyond the last code point.
    for (const char* bytes : {"\xE2\x82", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80",
                              "\xF4\x90\x80\x80", "\xF0\x8F\xBF\xBF", "\xC3(", "\x80"}) {
        EXPECT_TRUE(textError(std::string("a: { x = \"\xC3\xA4") + bytes + "\" }")
                        .starts_with("DIR/vesk.txt(1,11): the byte 0x"))
            << bytes;
    }
}

TEST_F(SourceFiles, AreAnnouncedAtTraceLevel) {
    const auto path = write("vesk.txt", "");
    for (const int threshold : {1, 2}) {
        test::ConsoleCapture console(threshold);
        parseUnitFile(path);
        EXPECT_EQ(readable(console.text()), threshold == 1 ? "Parsing DIR/vesk.txt\n" : "");
    }
}

}  // namespace
}  // namespace Vesk
