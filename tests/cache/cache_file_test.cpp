#include "cache/cache_file.h"

#include <gtest/gtest.h>
#include <map>

#include "cache/request_samples.h"
#include "support/console_capture.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

// A record with every form of assignment, as any build of vesk must read and write it.
constexpr const char* kWholeFile =
    "VESK_CACHE_V7\n1\n9\nmain::app\n1\n"
    "1\nA 1 0\n21\nC_FILES = [P\"C:\\a.c\"]\n1\nS 1 0\n7\nOBJECTS\n3\na.o\n"
    "1\nR 2 1\n5\nFLAGS\n4\n-O\n2\n"
    "1\nA 1 1\n10\nresult = 0\n";

/// All assignments of a record, in order, from its counts and flags.
std::vector<Assignment> assignmentsOf(const RecordText& record) {
    CacheReader reader(record.text());
    std::uint64_t parts = 0;
    EXPECT_TRUE(reader.number(parts));
    std::vector<Assignment> all;
    const auto take = [&] {
        auto assignment = reader.assignment("/base");
        EXPECT_TRUE(assignment);
        all.push_back(assignment.value_or(Assignment()));
    };
    const auto takeMany = [&](bool hasFlags) {
        std::uint64_t count = 0;
        EXPECT_TRUE(reader.number(count));
        for (; count > 0; --count) {
            take();
            std::string_view flag = "0";
            if (hasFlags && reader.line(flag) && flag == "1") {
                take();
            }
        }
    };
    for (; parts > 0; --parts) {
        takeMany(true);
        takeMany(false);
    }
    takeMany(false);
    return all;
}

class CacheFileTest : public testing::Test {
  protected:
    std::string load(std::string_view content) {
        write(file, content);
        return load();
    }

    /// The warning; the records that were read come into `records`.
    std::string load() {
        records.clear();
        ConsoleCapture console;
        std::optional<CacheFileIdentity> identity;
        const bool good = loadCacheFile(
            file,
            [this](std::string_view key, const RecordText& text) { records.emplace(key, text); },
            identity);
        std::string warning = console.text();
        EXPECT_EQ(good, warning.find("Cache file '") == std::string::npos) << warning;
        return warning;
    }

    std::string warning(const std::string& fault) const {
        return "Cache file '" + platform::pathToUtf8(file) + "' " + fault +
               ". Starting with empty cache.\n";
    }

    TempDir directory;
    fs::path file = directory / ".vesk_cache";
    std::map<std::string, RecordText> records;
};

TEST_F(CacheFileTest, TheFormatIsReadAndWrittenByteForByte) {
    EXPECT_EQ(load(kWholeFile), "");
    ASSERT_EQ(records.size(), 1u);
    const std::vector<Assignment> read = assignmentsOf(records.at("main::app"));
    ASSERT_EQ(read.size(), 4u);
    EXPECT_EQ(read[0].toDisplayString(), "C_FILES = [ P\"C:\\a.c\" ]");
    EXPECT_EQ(read[1].value->toString(), "a.o");
    EXPECT_EQ(read[2].value->toString(), "-O\n2");
    EXPECT_EQ(read[2].op, AssignOperator::Append);
    EXPECT_EQ(read[3].modifier, AssignModifier::Output);

    fs::remove(file);
    CacheFileWriter writer(directory / "new directory" / ".vesk_cache", 1);
    writer.write("main::app", records.at("main::app"), today());
    EXPECT_TRUE(writer.finish());
    EXPECT_EQ(contentOf(directory / "new directory" / ".vesk_cache"), kWholeFile);
    EXPECT_FALSE(fs::exists(directory / "new directory" / ".vesk_cache.tmp"));
}

TEST_F(CacheFileTest, EveryFaultIsNamed) {
    EXPECT_EQ(load(), "") << "a missing file is an empty cache";
    const std::string v7 = "VESK_CACHE_V7\n";
    const std::pair<std::string, const char*> cases[] = {
        {"", "has invalid header"},
        {"VESK_CACHE_V7", "has invalid header"},
        {"VESK_CACHE_V6\n0\n", "has unsupported header 'VESK_CACHE_V6'"},
        {v7, "has invalid records count"},
        {v7 + "-1\n", "has invalid records count"},
        {v7 + "18446744073709551616\n", "has invalid records count"},
        {v7 + "9223372036854775808\n", "is malformed (record key)"},
        {v7 + "1\n1\na\nx\n", "is malformed (recipe count)"},
        {v7 + "1\n1\na\n9223372036854775808\n", "is malformed (inputs count)"},
        {v7 + "1\n1\na\n1\n9223372036854775808\n", "is malformed (input assignment)"},
        {v7 + "1\n1\na\n1\n1\nS 1 0\n1\nx\n1\ny\n2\n", "is malformed (input intermediate flag)"},
        {v7 + "1\n1\na\n1\n1\nS 1 0\n1\nx\n1\ny\n1\n",
         "is malformed (input intermediate assignment)"},
        {v7 + "1\n1\na\n1\n0\n", "is malformed (outputs count)"},
        {v7 + "1\n1\na\n1\n0\n1\nS 9 0\n", "is malformed (output assignment)"},
        {v7 + "1\n1\na\n0\n", "is malformed (env/context count)"},
        {v7 + "1\n1\na\n0\n2\nS 1 0\n1\nx\n1\ny\n", "is malformed (env/context assignment)"},
        {v7 + "0\n0\n", "is malformed (text after the last record)"},
        {v7 + "1\n1\na\n0\n1\nS 1 0\n11\nfiles: read\n0\n\n", "is malformed (record seal)"},
    };
    for (const auto& [content, fault] : cases) {
        EXPECT_EQ(load(content), warning(fault)) << content;
    }
}

TEST_F(CacheFileTest, AnUnwritablePlaceIsReportedAndTheOldFileStays) {
    write(file, "old");
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    ConsoleCapture console;
    CacheFileWriter writer(file, 0);
    EXPECT_FALSE(writer.finish());
    const std::string name = platform::pathToUtf8(file);
    EXPECT_EQ(console.text().find("Unable to replace cache file '" + name + "' with '" + name +
                                  ".tmp': "),
              0u);
    fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(contentOf(file), "old");

    write(directory / "file", "");
    ConsoleCapture other;
    EXPECT_FALSE(CacheFileWriter(directory / "file" / ".vesk_cache", 0).finish());
    EXPECT_EQ(
        other.text().find("Unable to create cache directory '" + directory.text("file") + "': "),
        0u);
}

}  // namespace
}  // namespace Vesk::test
