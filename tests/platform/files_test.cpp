#include "platform/files.h"

#include <gtest/gtest.h>
#include <thread>

#include "platform/process.h"
#include "platform/support.h"
#include "platform/system.h"

namespace Vesk::platform {
namespace {

using test::contentOf;
using test::TempDir;
using test::write;

TEST(Paths, AbsoluteOnes) {
    const struct {
        std::string_view text;
        bool posix;
        bool windows;
    } cases[] = {
        {"", false, false},     {"/usr", true, false},        {"C:/x", true, true},
        {"c:\\x", true, true},  {"C:", false, false},         {"C:x", false, false},
        {"1:/x", false, false}, {"\\\\host\\s", false, true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(isAbsolutePath(c.text), kWindows ? c.windows : c.posix) << c.text;
    }
}

TEST(WholeFile, KeepsEveryByteAndAppends) {
    const TempDir dir;
    const auto name = dir / (kWindows ? "naïve file.bin" : "naïve \"file\".bin");
    std::string bytes(100'000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7);
    }
    std::error_code error = std::make_error_code(std::errc::io_error);
    ASSERT_TRUE(writeWholeFile(name, bytes, Append::no, error));
    EXPECT_FALSE(error);
    EXPECT_EQ(contentOf(name), bytes);

    ASSERT_TRUE(writeWholeFile(name, "a\r\nb\n\x1A", Append::no, error));
    ASSERT_TRUE(writeWholeFile(name, "end", Append::yes, error));
    EXPECT_EQ(contentOf(name), std::string("a\r\nb\n\x1A") + "end");
}

TEST(WholeFile, ReportsWhatIsWrong) {
    const TempDir dir;
    write(dir / "ten", "0123456789");
    std::error_code error;
    EXPECT_FALSE(readWholeFile(dir / "missing", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory) << error.message();
    EXPECT_FALSE(readWholeFile(dir / "ten", error, 9));
    EXPECT_EQ(error, std::errc::file_too_large);
    EXPECT_EQ(readWholeFile(dir / "ten", error, 10), "0123456789");
    EXPECT_FALSE(writeWholeFile(dir / "no/such/dir", "x", Append::no, error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory) << error.message();
}

TEST(WholeFile, WorksBeyondTheClassicPathLimit) {
    const TempDir dir;
    // The directory is still within the limit, the file is beyond it.
    const auto deep = dir / std::string(150, 'd');
    std::filesystem::create_directory(deep);
    const auto file = deep / std::string(120, 'f');
    ASSERT_GT(file.native().size(), 260U);
    write(file, "deep");
    EXPECT_EQ(contentOf(file), "deep");
    ASSERT_TRUE(fileStatus(file));
    std::error_code error;
    EXPECT_TRUE(replaceFile(file, deep / "short", error)) << error.message();
    EXPECT_EQ(contentOf(deep / "short"), "deep");
}

TEST(PrivateFile, IsNeverALink) {
    const TempDir dir;
    write(dir / "other", "other");
    std::error_code error;
    std::filesystem::create_symlink(dir / "other", dir / "link", error);
    if (error) {
        GTEST_SKIP() << "no links here: " << error.message();
    }
    EXPECT_FALSE(writePrivateFile(dir / "link", "mine", Append::no, error));
    EXPECT_TRUE(error);
    FileWriter writer(dir / "link", Append::no, FileWriter::Access::newlyPrivate);
    EXPECT_TRUE(writer.write("mine") && writer.close());
    EXPECT_EQ(contentOf(dir / "link") + contentOf(dir / "other"), "mineother");
    ASSERT_TRUE(writePrivateFile(dir / "link", "his", Append::no, error)) << error.message();
    ASSERT_TRUE(writePrivateFile(dir / "link", " and hers", Append::yes, error));
    EXPECT_EQ(contentOf(dir / "link"), "his and hers");
}

TEST(ReplaceFile, ReplacesAndRefusesReadOnlyTargets) {
    const TempDir dir;
    write(dir / "new", "new");
    write(dir / "old", "old");
    std::error_code error;
    ASSERT_TRUE(replaceFile(dir / "new", dir / "old", error)) << error.message();
    EXPECT_EQ(contentOf(dir / "old"), "new");
    EXPECT_FALSE(std::filesystem::exists(dir / "new"));

    write(dir / "newer", "newer");
    using std::filesystem::perms;
    std::filesystem::permissions(dir / "old", perms::owner_read);
    EXPECT_FALSE(replaceFile(dir / "newer", dir / "old", error));
    EXPECT_EQ(error, std::errc::permission_denied);
    EXPECT_EQ(contentOf(dir / "old") + contentOf(dir / "newer"), "newnewer");
    std::filesystem::permissions(dir / "old", perms::owner_read | perms::owner_write);

    EXPECT_FALSE(replaceFile(dir / "missing", dir / "old", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory) << error.message();
}

TEST(FileStatusTest, TellsSizeKindAndTime) {
    const TempDir dir;
    write(dir / "file", "12345");
    const auto status = fileStatus(dir / "file");
    ASSERT_TRUE(status);
    EXPECT_FALSE(status->directory);
    EXPECT_EQ(status->size, 5U);
    // Between 2001 and 2200: the right epoch and the right unit.
    EXPECT_GT(status->modifiedNanoseconds, std::int64_t{1'000'000'000} * 1'000'000'000);
    EXPECT_LT(status->modifiedNanoseconds, std::int64_t{7'258'118'400} * 1'000'000'000);
    EXPECT_TRUE(fileStatus(dir.path())->directory);
    EXPECT_FALSE(fileStatus(dir / "missing"));
}

TEST(FileLockTest, MakesAnotherProcessWait) {
    const TempDir dir;
    std::thread holder([&] {
        EXPECT_EQ(runProcess(test::childRequest({"hold", dir.text("lock"), dir.text("started"),
                                                 dir.text("release"), dir.text("log")}))
                      .status,
                  0);
    });
    test::waitForFile(dir / "started");
    int waits = 0;
    {
        // The holder lets go only after we have been told to wait.
        const FileLock lock(dir / "lock", [&] {
            ++waits;
            write(dir / "release", "now");
        });
        EXPECT_EQ(contentOf(dir / "log"), "holder\n");
    }
    holder.join();
    EXPECT_EQ(waits, 1);
    const FileLock again(dir / "lock", [] { ADD_FAILURE() << "the lock was not released"; });
}

}  // namespace
}  // namespace Vesk::platform
