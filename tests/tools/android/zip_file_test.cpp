// Archives: what is written is read again, and damage is noticed.

#include "tools/android/zip_file.h"

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/scratch_directory.h"

namespace Vesk::test {
namespace {

class ZipFiles : public testing::Test {
  protected:
    std::filesystem::path at(const char* name) const {
        return platform::pathFromUtf8(directory_.path() + "/" + name);
    }

    /// Two files: one that is mapped by pages, and one with a name beyond ASCII.
    void writeSample(const char* archive) const {
        directory_.write("a.so", "library");
        directory_.write("b", "");
        ZipWriter writer(at(archive));
        writer.add("lib/x86/a.so", at("a.so"));
        writer.add("ä.txt", at("b"));
        writer.finish();
    }

    std::string bytesOf(const char* name) const {
        std::error_code error;
        return platform::readWholeFile(at(name), error).value_or("");
    }

    ScratchDirectory directory_;
};

TEST_F(ZipFiles, RoundTripThroughACopy) {
    writeSample("first.zip");
    const ZipFile first(at("first.zip"));
    ZipWriter writer(at("second.zip"));
    for (auto entry = first.entries().rbegin(); entry != first.entries().rend(); ++entry) {
        writer.copy(first, *entry);
    }
    writer.finish();

    const ZipFile second(at("second.zip"));
    ASSERT_EQ(second.entries().size(), 2);
    const ZipEntry& library = second.entries()[1];
    EXPECT_EQ(second.entries()[0].name, "ä.txt");
    EXPECT_EQ(library.name, "lib/x86/a.so");
    EXPECT_EQ(second.packedBytes(library), "library");
    EXPECT_EQ(library.checksum, 0xA18098BC);
    EXPECT_EQ(library.offset % 16384, 0);
    EXPECT_EQ(second.entries()[0].offset % 4, 0);
}

TEST_F(ZipFiles, SameFilesGiveSameBytes) {
    writeSample("first.zip");
    writeSample("second.zip");
    EXPECT_EQ(bytesOf("first.zip"), bytesOf("second.zip"));
}

TEST_F(ZipFiles, CutOffAnywhereIsDamage) {
    writeSample("whole.zip");
    const std::string whole = bytesOf("whole.zip");
    std::vector<std::size_t> lengths = {0, 1, 21, 40, 16384, whole.size() - 1};
    for (std::size_t length = whole.size() - 150; length < whole.size(); ++length) {
        lengths.push_back(length);
    }
    for (const std::size_t length : lengths) {
        directory_.write("cut.zip", std::string_view(whole).substr(0, length));
        EXPECT_THROW(ZipFile(at("cut.zip")), VeskException) << length;
    }
    // A directory that leads out of the file.
    for (std::size_t i = whole.size() - 150; i < whole.size() - 22; ++i) {
        std::string changed = whole;
        changed[i] = '\xFF';
        directory_.write("changed.zip", changed);
        try {
            const ZipFile file(at("changed.zip"));
            for (const ZipEntry& entry : file.entries()) {
                EXPECT_LE(file.packedBytes(entry).size(), changed.size());
            }
        } catch (const VeskException&) {
            continue;
        }
    }
}

TEST_F(ZipFiles, OneNameOnce) {
    directory_.write("a", "1");
    directory_.write("b", "2");
    ZipWriter writer(at("x.zip"));
    writer.add("name", at("a"));
    EXPECT_THROW(writer.add("name", at("b")), VeskException);
    EXPECT_THROW(writer.add("other", at("none")), VeskException);
}

}  // namespace
}  // namespace Vesk::test
