#include "cache/project_cache.h"

#include <atomic>
#include <cstdint>
#include <future>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

#include "cache/request_samples.h"
#include "support/console_capture.h"

namespace Vesk::test {
namespace {

constexpr std::uint64_t kForever = 0;

class ProjectCacheTest : public testing::Test {
  protected:
    ObtainResult obtain(const char* command, Lookup lookup = Lookup::claim,
                        std::uint64_t wait = kForever) {
        return cache.obtain("main::app", requestFor(command), lookup, wait);
    }

    RecordText recordFor(const char* command) {
        return recordOf(requestFor(command), states, cache.root());
    }

    TempDir directory;
    FileStates states;
    ProjectCache cache{directory.path(), states};
};

TEST_F(ProjectCacheTest, ABuildThatIsRecordedIsAHitForTheSameRequest) {
    EXPECT_EQ(obtain("cc", Lookup::only).answer, CacheAnswer::Miss);
    const ObtainResult claimed = obtain("cc");
    EXPECT_EQ(claimed.answer, CacheAnswer::Claimed);
    EXPECT_NE(claimed.token, 0u);
    EXPECT_FALSE(claimed.record);
    EXPECT_TRUE(cache.upsert("main::app", recordFor("cc"), claimed.token));

    EXPECT_EQ(obtain("cc").answer, CacheAnswer::Hit);
    EXPECT_EQ(obtain("cc -O2", Lookup::only).answer, CacheAnswer::Miss);
    EXPECT_TRUE(obtain("cc -O2", Lookup::only).record) << "what was built before";
    EXPECT_EQ(cache.obtain("main::lib", requestFor("cc"), Lookup::only, kForever).answer,
              CacheAnswer::Miss);
}

TEST_F(ProjectCacheTest, AFailedBuildLeavesNoHitBehindNorInTheFile) {
    cache.upsert("main::app", recordFor("old"), 0);
    ASSERT_TRUE(cache.save());
    ObtainResult claimed = obtain("new");
    ASSERT_EQ(claimed.answer, CacheAnswer::Claimed);

    ProjectCache killed(directory.path(), states);
    killed.load();
    EXPECT_EQ(killed.obtain("main::app", requestFor("old"), Lookup::only, kForever).answer,
              CacheAnswer::Miss)
        << "a process that dies while it builds";

    cache.release("main::app", claimed.token);
    const ObtainResult again = obtain("old");
    EXPECT_EQ(again.answer, CacheAnswer::Claimed) << "the failed build may have changed the files";
    EXPECT_NE(again.token, claimed.token);
    cache.release("main::app", claimed.token);  // no longer current: the claim stays
    ASSERT_TRUE(cache.save());
    ProjectCache next(directory.path(), states);
    next.load();
    EXPECT_EQ(next.obtain("main::app", requestFor("old"), Lookup::only, kForever).answer,
              CacheAnswer::Miss);
    EXPECT_TRUE(cache.upsert("main::app", recordFor("old"), again.token));
    EXPECT_EQ(obtain("old").answer, CacheAnswer::Hit);
}

TEST_F(ProjectCacheTest, OnlyTheHolderOfTheClaimMayRecord) {
    const ObtainResult claimed = obtain("cc");
    ConsoleCapture console;
    EXPECT_FALSE(cache.upsert("main::app", recordFor("cc"), claimed.token + 1));
    EXPECT_FALSE(cache.upsert("main::app", recordFor("cc"), 0));
    EXPECT_TRUE(cache.upsert("main::app", recordFor("cc"), claimed.token));
    EXPECT_FALSE(cache.upsert("main::app", recordFor("cc"), claimed.token));
    const std::string rejected = "Cache upsert rejected for 'main::app': claim token mismatch.\n";
    EXPECT_EQ(console.text(), rejected + rejected + rejected);
}

TEST_F(ProjectCacheTest, AnUnknownKeyIsInserted) {
    ConsoleCapture console(1);
    EXPECT_TRUE(cache.upsert("main::app", recordFor("cc"), 77));
    EXPECT_EQ(console.text(), "Inserted new cache record for 'main::app'.\n");
    EXPECT_EQ(obtain("cc").answer, CacheAnswer::Hit);
}

TEST_F(ProjectCacheTest, WaitersGetTheRecordOfTheOneWhoBuilds) {
    const ObtainResult claimed = obtain("cc");
    std::vector<std::future<ObtainResult>> waiters;
    for (const std::uint64_t wait : {kForever, std::numeric_limits<std::uint64_t>::max()}) {
        waiters.push_back(std::async(std::launch::async,
                                     [this, wait] { return obtain("cc", Lookup::claim, wait); }));
    }
    EXPECT_TRUE(cache.upsert("main::app", recordFor("cc"), claimed.token));
    for (auto& waiter : waiters) {
        EXPECT_EQ(waiter.get().answer, CacheAnswer::Hit);
    }
}

TEST_F(ProjectCacheTest, AWaitThatEndsWithoutARecordIsAMiss) {
    const ObtainResult claimed = obtain("cc");
    ConsoleCapture console(2);
    EXPECT_EQ(obtain("cc", Lookup::claim, 1).answer, CacheAnswer::Miss);
    EXPECT_EQ(console.text(),
              "Cache record for 'main::app' was claimed but resulted in invalid recipes upon "
              "completion.\n");
    EXPECT_TRUE(cache.upsert("main::app", recordFor("cc"), claimed.token));
}

TEST_F(ProjectCacheTest, AClosedCacheRefusesAndWakesWaiters) {
    const ObtainResult claimed = obtain("cc");
    auto waiter = std::async(std::launch::async, [this] { return obtain("cc"); });
    cache.close();
    EXPECT_EQ(waiter.get().answer, CacheAnswer::Refused);
    EXPECT_EQ(obtain("cc").answer, CacheAnswer::Refused);
    EXPECT_FALSE(cache.upsert("main::app", recordFor("cc"), claimed.token));
    EXPECT_FALSE(cache.upsert("main::other", recordFor("cc"), 0));
}

// Many visits of few keys at once: each key is built by exactly one of them.
TEST_F(ProjectCacheTest, EachRecordIsBuiltOnce) {
    constexpr int kKeys = 50;
    std::vector<std::atomic<int>> builds(kKeys);
    const std::string shared = directory.text("shared");
    write(directory / "shared", "x");
    const auto visitAll = [&] {
        for (int i = 0; i < kKeys; ++i) {
            const std::string key = "main::" + std::to_string(i);
            const CacheRequest request = requestFor("cc", {trackedPath(directory / "shared")});
            const ObtainResult result = cache.obtain(key, request, Lookup::claim, kForever);
            if (result.answer == CacheAnswer::Claimed) {
                ++builds[static_cast<std::size_t>(i)];
                EXPECT_TRUE(
                    cache.upsert(key, recordOf(request, states, cache.root()), result.token));
            } else {
                EXPECT_EQ(result.answer, CacheAnswer::Hit);
            }
        }
        EXPECT_TRUE(cache.save());
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(visitAll);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::atomic<int>& count : builds) {
        EXPECT_EQ(count, 1);
    }
}

}  // namespace
}  // namespace Vesk::test
