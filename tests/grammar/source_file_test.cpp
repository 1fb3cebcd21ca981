// Files that are not there, not text, or not meant for vesk.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "grammar/loaders.h"
#include "grammar/text_files.h"

namespace Vesk {
namespace {

class SourceFiles : public LoaderTest {
  protected:
    std::string unitError(const std::filesystem::path& path) const {
        return outcome([&] { return describe(parseUnitFile(path)); });
    }
    std::string textError(std::string_view bytes) const {
        return unitError(write("vesk.txt", bytes));
    }
};

TEST_F(SourceFiles, ThatCannotBeReadAreNamedWithTheReason) {
    const std::string missing = unitError(directory_ / "no.txt");
    EXPECT_TRUE(missing.starts_with("Unable to open file!\n  DIR/no.txt: ")) << missing;
    EXPECT_EQ(unitError(directory_.path()),
              "Unable to open file!\n  DIR: it is a directory, not a file");
    EXPECT_EQ(outcome([&] { return parseProjectFile(directory_ / "no.txt").name; }),
              "Project file 'DIR/no.txt' not found.");
    EXPECT_EQ(outcome([&] { return parseProjectFile(directory_.path()).name; }),
              "Project file 'DIR' not found.\n  it cannot be read: it is a directory, not a file");
    const auto path = write("vesk.txt", "");
    std::filesystem::resize_file(path, kMaxFileBytes + 1);
    EXPECT_EQ(unitError(path),
              "Unable to open file!\n  DIR/vesk.txt: it is larger than 32 MiB, so it is not a file "
              "written for vesk");
}

TEST_F(SourceFiles, ThatAreNoTextAreRefusedWithThePlace) {
    EXPECT_EQ(textError(std::string("a: {}\n\xC3\xA4 \0", 10)),
              "DIR/vesk.txt(2,2): a NUL byte: this is not a text file, or one saved as UTF-16. "
              "Save the file as UTF-8.");
    EXPECT_EQ(textError("\xFF\xFE"),
              "DIR/vesk.txt(1,0): the byte 0xFF is not UTF-8 here. Save the file as UTF-8.");
    // Cut short, over-long, a surrogate, beyond the last code point.
    for (const char* bytes : {"\xE2\x82", "\xC0\xAF", "\xE0\x80\x80", "\xED\xA0\x80",
                              "\xF4\x90\x80\x80", "\xF0\x8F\xBF\xBF", "\xC3(", "\x80"}) {
        const std::string error = textError(std::string("a: { x = \"\xC3\xA4") + bytes + "\" }");
        EXPECT_TRUE(error.starts_with("DIR/vesk.txt(1,11): the byte 0x")) << error;
    }
}

}  // namespace
}  // namespace Vesk
