// A cache that was not left as it was written is never believed.

#include <gtest/gtest.h>

#include "cache/cache_file.h"
#include "cache/freshness.h"
#include "cache/record_files.h"
#include "cache/request_samples.h"
#include "support/console_capture.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kApp = "main::app";
constexpr const char* kTool = "main::tool";

/// Every text that differs from this one in one place.
std::vector<std::string> damagedInOnePlace(const std::string& whole) {
    std::vector<std::string> damaged;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        const std::string before = whole.substr(0, at);
        const std::string after = whole.substr(at + 1);
        const char byte = whole[at];
        damaged.push_back(before + static_cast<char>(byte ^ 1) + after);
        damaged.push_back(before + byte + byte + after);
        damaged.push_back(before);
    }
    return damaged;
}

class DamageTest : public testing::Test {
  protected:
    /// A project with two targets, built and saved.
    DamageTest() {
        write(directory / "src", "old");
        write(directory / "out", "made");
        FileStates states;
        ProjectCache cache(directory.path(), states);
        for (const char* key : {kApp, kTool}) {
            EXPECT_TRUE(cache.upsert(key, recordOf(requestOf(key), states, cache.root()), 0));
        }
        EXPECT_TRUE(cache.save());
    }

    CacheRequest requestOf(std::string_view key) const {
        return key == kApp ? requestFor("cc", {trackedPath(directory / "src")},
                                        {trackedPath(directory / "out")})
                           : requestFor("print");
    }

    /// What a build finds: its warnings, and how many of the targets are hits.
    std::string build() {
        hits = 0;
        ConsoleCapture console;
        FileStates states;
        ProjectCache cache(directory.path(), states);
        cache.load();
        for (const char* key : {kApp, kTool}) {
            hits += cache.obtain(key, requestOf(key), Lookup::only, 0).answer == CacheAnswer::Hit;
        }
        return console.text();
    }

    void expectThatEveryDamageIsSeen(const fs::path& target, const std::string& kind) {
        const std::string start = kind + " file '" + platform::pathToUtf8(target) + "' ";
        for (const std::string& damaged : damagedInOnePlace(contentOf(target))) {
            write(target, damaged);
            const std::string said = build();
            ASSERT_TRUE(said.starts_with(start)) << said << damaged;
            ASSERT_TRUE(said.ends_with(". Starting with empty cache.\n")) << said;
            ASSERT_EQ(hits, 0) << damaged;
        }
    }

    TempDir directory;
    fs::path file = directory / kCacheFileName;
    int hits = 0;
};

TEST_F(DamageTest, EveryByteOfTheCache) {
    EXPECT_EQ(build(), "");
    EXPECT_EQ(hits, 2);
    expectThatEveryDamageIsSeen(file, "Cache");
}

TEST_F(DamageTest, EveryByteOfTheClaims) {
    const fs::path claims = directory / ".vesk_cache.claims";
    ClaimJournal(file).note({kApp});
    EXPECT_EQ(build(), "");
    EXPECT_EQ(hits, 1) << "only the one that was claimed is no hit";
    expectThatEveryDamageIsSeen(claims, "Claims");
    fs::remove(claims);
    fs::create_directory(claims);
    EXPECT_TRUE(build().starts_with("Claims file '")) << "it cannot be read";
    EXPECT_EQ(hits, 0);
}

TEST_F(DamageTest, WithoutItsIndexTheCacheIsAsGood) {
    const fs::path index = directory / ".vesk_cache.index";
    for (const std::string& damaged : damagedInOnePlace(contentOf(index))) {
        write(index, damaged);
        ASSERT_EQ(build(), "");
        ASSERT_EQ(hits, 2);
    }
}

TEST_F(DamageTest, RecordsAreCopiedAsTheyAre) {
    const std::string before = contentOf(file);
    for (const char* other : {"main::first", "main::second"}) {
        FileStates states;
        ProjectCache cache(directory.path(), states);
        cache.load();
        EXPECT_TRUE(cache.upsert(other, recordOf(requestOf(other), states, cache.root()), 0));
        EXPECT_TRUE(cache.save());
        EXPECT_EQ(build(), "");
        EXPECT_EQ(hits, 2);
    }
    fs::remove(directory / ".vesk_cache.index");
    EXPECT_EQ(build(), "");
    EXPECT_EQ(hits, 2);
    FileStates states;
    ProjectCache cache(directory.path(), states);
    cache.load();
    cache.forget("main::first");
    cache.forget("main::second");
    EXPECT_TRUE(cache.save());
    EXPECT_EQ(contentOf(file), before);
}

// The seal aside: what a record says of its files has to be complete.
TEST_F(DamageTest, ATableOfFilesThatIsNotWhole) {
    FileStates states;
    ProjectCache cache(directory.path(), states);
    CacheRequest request = requestOf(kApp);
    request.parts[kFirstRecipePart].reads = request.parts[kTargetPart].reads;
    request.parts[kFirstRecipePart].judged = Judged::Alone;
    request.parts[kFirstRecipePart].declaration = Declaration::Complete;
    const RecordText whole = recordOf(request, states, cache.root());
    const auto verdict = [&](const RecordText& record) {
        Freshness freshness(request, &record, states, cache.root());
        return std::pair(freshness.everything(), freshness.fresh(kFirstRecipePart));
    };
    EXPECT_EQ(verdict(whole), std::pair(true, true));
    EXPECT_EQ(verdict(withFiles(whole, {})), std::pair(false, false)) << "an empty table";

    const std::string table = "files: states\n";
    std::string noState(whole.text());
    noState[noState.find('\n', noState.find(table) + table.size()) + 1] = 'x';
    EXPECT_EQ(verdict(RecordText(noState)), std::pair(false, false)) << "a line that is no state";

    const std::string reads = "files: read\n1\n";
    std::string noFile(whole.text());
    noFile[noFile.rfind(reads) + reads.size()] = '9';
    EXPECT_FALSE(verdict(RecordText(noFile)).second) << "a file that is not in the table";
}

TEST_F(DamageTest, RecordsOfTargetsThatAreGoneAreDroppedAfterSomeTime) {
    FileStates states;
    const TrackingRoot root(directory.path());
    const auto rewrite = [&](DayNumber app, DayNumber tool) {
        CacheFileWriter writer(file, 2);
        writer.write(kApp, recordOf(requestOf(kApp), states, root), app);
        writer.write(kTool, recordOf(requestOf(kTool), states, root), tool);
        EXPECT_TRUE(writer.finish());
    };
    const auto saveAfterAsking = [&](const char* key) {
        ProjectCache cache(directory.path(), states);
        cache.load();
        cache.obtain(key, requestOf(key), Lookup::only, 0);
        EXPECT_TRUE(cache.upsert("main::new", recordOf(requestOf(kTool), states, root), 0));
        EXPECT_TRUE(cache.save());
    };
    rewrite(today() - kDaysKept, today() - kDaysKept - 1);
    saveAfterAsking("main::other");
    EXPECT_EQ(build(), "");
    EXPECT_EQ(hits, 1);
    rewrite(1, 1);
    saveAfterAsking(kTool);
    build();
    EXPECT_EQ(hits, 1) << "the one that was asked for stays";
}

}  // namespace
}  // namespace Vesk::test
