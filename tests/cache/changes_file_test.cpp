// A large cache file is not written again for a few records, and those that it holds are never
// taken for what came after them.

#include <gtest/gtest.h>

#include "cache/request_samples.h"
#include "support/console_capture.h"

namespace Vesk::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kApp = "main::app";
constexpr const char* kBig = "main::big";

class ChangesTest : public testing::Test {
  protected:
    ChangesTest() {
        write(directory / "in", "");
        run([&](ProjectCache& cache) {
            EXPECT_TRUE(cache.upsert(kBig, recordOf(big, states, cache.root()), 0));
            EXPECT_TRUE(cache.upsert(kApp, recordOf(requestFor("first"), states, cache.root()), 0));
            EXPECT_TRUE(cache.save());
        });
        whole = contentOf(file);
    }

    /// What another process does.
    template <class Work>
    std::string run(Work work) {
        ConsoleCapture console;
        ProjectCache cache(directory.path(), states);
        cache.load();
        work(cache);
        return console.text();
    }

    ObtainResult obtain(ProjectCache& cache, const CacheRequest& request, Lookup lookup,
                        const char* key = kApp) {
        return cache.obtain(key, request, lookup, 0);
    }

    void build(const char* command) {
        run([&](ProjectCache& cache) {
            const ObtainResult claimed = obtain(cache, requestFor(command), Lookup::claim);
            ASSERT_EQ(claimed.answer, CacheAnswer::Claimed);
            EXPECT_TRUE(cache.upsert(kApp, recordOf(requestFor(command), states, cache.root()),
                                     claimed.token));
            EXPECT_TRUE(cache.save());
        });
    }

    /// The commands of which the target's record is a hit; the other record must always be one.
    std::vector<std::string> hits() {
        std::vector<std::string> found;
        const std::string said = run([&](ProjectCache& cache) {
            for (const char* command : {"first", "second", "third"}) {
                if (obtain(cache, requestFor(command), Lookup::only).answer == CacheAnswer::Hit) {
                    found.emplace_back(command);
                }
            }
            EXPECT_EQ(obtain(cache, big, Lookup::only, kBig).answer, CacheAnswer::Hit);
        });
        EXPECT_EQ(said, "");
        return found;
    }

    using Hits = std::vector<std::string>;

    TempDir directory;
    FileStates states;
    const CacheRequest big = requestFor(std::string(200'000, 'x'));
    fs::path file = directory / ".vesk_cache";
    fs::path changes = directory / ".vesk_cache.changes";
    fs::path claims = directory / ".vesk_cache.claims";
    std::string whole;
};

TEST_F(ChangesTest, AreAppendedUntilThereAreMany) {
    build("second");
    EXPECT_EQ(contentOf(file), whole);
    EXPECT_EQ(hits(), Hits{"second"});
    build("third");
    EXPECT_EQ(contentOf(file), whole);
    EXPECT_EQ(hits(), Hits{"third"});
    const std::string before = contentOf(changes);
    for (int i = 0; contentOf(file) == whole; ++i) {
        ASSERT_LT(i, 1000);
        build(i % 2 == 0 ? "first" : "second");
    }
    EXPECT_FALSE(fs::exists(changes) || fs::exists(claims));
    const Hits now = hits();
    EXPECT_EQ(now.size(), 1u);
    write(changes, before);
    EXPECT_EQ(hits(), now) << "they are of another cache file";
}

TEST_F(ChangesTest, AKilledBuildLeavesNoHit) {
    build("second");
    run([&](ProjectCache& cache) { obtain(cache, requestFor("third"), Lookup::claim); });
    EXPECT_EQ(hits(), Hits{});
    run([&](ProjectCache& cache) { EXPECT_TRUE(cache.save()); });
    EXPECT_EQ(hits(), Hits{});
    build("third");
    EXPECT_EQ(hits(), Hits{"third"});
}

TEST_F(ChangesTest, NoDamageBringsAnOlderRecordBack) {
    build("second");
    build("third");
    const std::string good = contentOf(changes);
    for (std::size_t at = 0; at < good.size(); ++at) {
        std::string damaged = good;
        damaged[at] = static_cast<char>(damaged[at] ^ 1);
        for (const std::string& text : {good.substr(0, at), damaged}) {
            write(changes, text);
            ASSERT_EQ(hits(), Hits{}) << at;
        }
    }
    run([&](ProjectCache& cache) {
        const ObtainResult claimed = obtain(cache, requestFor("first"), Lookup::claim);
        EXPECT_TRUE(
            cache.upsert(kApp, recordOf(requestFor("first"), states, cache.root()), claimed.token));
        EXPECT_TRUE(cache.save());
    });
    EXPECT_EQ(hits(), Hits{"first"}) << "nothing is appended behind what is damaged";
}

TEST_F(ChangesTest, WhatCannotBeAppendedIsWrittenWithTheRest) {
    fs::create_directory(changes);
    build("second");
    EXPECT_NE(contentOf(file), whole);
    EXPECT_FALSE(fs::exists(claims));
    EXPECT_EQ(hits(), Hits{"second"});
}

}  // namespace
}  // namespace Vesk::test
