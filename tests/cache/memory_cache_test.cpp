#include "build/cache/memory_cache.h"

#include <atomic>
#include <cstdint>
#include <future>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

#include "support/console_capture.h"
#include "types/string_values.h"

namespace Vesk::test {
namespace {

constexpr std::uint64_t kForever = 0;

CacheRequest requestFor(const char* command) {
    return {{}, {textAssignment("command", command)}, {}};
}

CacheRecord recordOf(const char* command) {
    CacheRecord record;
    record.key = "main::app";
    record.environment = requestFor(command).environment;
    return record;
}

class MemoryCacheTest : public testing::Test {
  protected:
    ObtainResult obtain(const char* command, Claim claim = Claim::yes,
                        std::uint64_t wait = kForever) {
        return cache.obtain("main::app", requestFor(command), claim, wait);
    }

    MemoryCache cache;
};

TEST_F(MemoryCacheTest, ABuildThatIsRecordedIsAHitForTheSameRequest) {
    EXPECT_EQ(obtain("cc", Claim::no).answer, CacheAnswer::Miss);
    const ObtainResult claimed = obtain("cc");
    EXPECT_EQ(claimed.answer, CacheAnswer::Claimed);
    EXPECT_NE(claimed.token, 0u);
    EXPECT_EQ(claimed.record, nullptr);
    EXPECT_TRUE(cache.upsert("main::app", recordOf("cc"), claimed.token));

    const ObtainResult hit = obtain("cc");
    EXPECT_EQ(hit.answer, CacheAnswer::Hit);
    EXPECT_EQ(hit.token, 0u);
    EXPECT_EQ(hit.record->environment[0].toDisplayString(), "command = \"cc\"");

    const ObtainResult miss = obtain("cc -O2", Claim::no);
    EXPECT_EQ(miss.answer, CacheAnswer::Miss);
    EXPECT_EQ(miss.record, hit.record) << "what was built before";
    EXPECT_EQ(cache.obtain("main::lib", requestFor("cc"), Claim::no, kForever).answer,
              CacheAnswer::Miss);
    EXPECT_TRUE(cache.save());
}

TEST_F(MemoryCacheTest, AFailedBuildLeavesNoHitBehind) {
    cache.upsert("main::app", recordOf("old"), 0);
    const ObtainResult claimed = obtain("new");
    ASSERT_EQ(claimed.answer, CacheAnswer::Claimed);
    cache.release("main::app", claimed.token);

    const ObtainResult again = obtain("old");
    EXPECT_EQ(again.answer, CacheAnswer::Claimed) << "the failed build may have changed the files";
    EXPECT_NE(again.token, claimed.token);
    EXPECT_NE(again.record, nullptr);
    cache.release("main::app", claimed.token);  // no longer current: the claim stays
    EXPECT_TRUE(cache.upsert("main::app", recordOf("old"), again.token));
    EXPECT_EQ(obtain("old").answer, CacheAnswer::Hit);
}

TEST_F(MemoryCacheTest, OnlyTheHolderOfTheClaimMayRecord) {
    const ObtainResult claimed = obtain("cc");
    ConsoleCapture console;
    EXPECT_FALSE(cache.upsert("main::app", recordOf("cc"), claimed.token + 1));
    EXPECT_FALSE(cache.upsert("main::app", recordOf("cc"), 0));
    EXPECT_TRUE(cache.upsert("main::app", recordOf("cc"), claimed.token));
    EXPECT_FALSE(cache.upsert("main::app", recordOf("cc"), claimed.token));
    const std::string rejected = "Cache upsert rejected for 'main::app': claim token mismatch.\n";
    EXPECT_EQ(console.text(), rejected + rejected + rejected);
}

TEST_F(MemoryCacheTest, AnUnknownKeyIsInserted) {
    ConsoleCapture console(1);
    EXPECT_TRUE(cache.upsert("main::app", recordOf("cc"), 77));
    EXPECT_EQ(console.text(), "Inserted new cache record for 'main::app'.\n");
    EXPECT_EQ(obtain("cc").answer, CacheAnswer::Hit);
}

TEST_F(MemoryCacheTest, WaitersGetTheRecordOfTheOneWhoBuilds) {
    const ObtainResult claimed = obtain("cc");
    std::vector<std::future<ObtainResult>> waiters;
    for (const std::uint64_t wait : {kForever, std::numeric_limits<std::uint64_t>::max()}) {
        waiters.push_back(std::async(std::launch::async,
                                     [this, wait] { return obtain("cc", Claim::yes, wait); }));
    }
    EXPECT_TRUE(cache.upsert("main::app", recordOf("cc"), claimed.token));
    for (auto& waiter : waiters) {
        EXPECT_EQ(waiter.get().answer, CacheAnswer::Hit);
    }
}

TEST_F(MemoryCacheTest, AWaitThatEndsWithoutARecordIsAMiss) {
    const ObtainResult claimed = obtain("cc");
    ConsoleCapture console(2);
    EXPECT_EQ(obtain("cc", Claim::yes, 1).answer, CacheAnswer::Miss);
    EXPECT_EQ(console.text(),
              "Cache record for 'main::app' was claimed but resulted in invalid recipes upon "
              "completion.\n");
    EXPECT_TRUE(cache.upsert("main::app", recordOf("cc"), claimed.token));
}

TEST_F(MemoryCacheTest, AClosedCacheRefusesAndWakesWaiters) {
    const ObtainResult claimed = obtain("cc");
    auto waiter = std::async(std::launch::async, [this] { return obtain("cc"); });
    cache.close();
    EXPECT_EQ(waiter.get().answer, CacheAnswer::Refused);
    EXPECT_EQ(obtain("cc").answer, CacheAnswer::Refused);
    EXPECT_EQ(cache.obtain("main::new", requestFor("cc"), Claim::yes, kForever).answer,
              CacheAnswer::Refused);
    EXPECT_FALSE(cache.upsert("main::app", recordOf("cc"), claimed.token));
    EXPECT_FALSE(cache.upsert("main::other", recordOf("cc"), 0));
}

// Many visits of few keys at once: each key is built by exactly one of them.
TEST_F(MemoryCacheTest, EachRecordIsBuiltOnce) {
    constexpr int kKeys = 50;
    std::vector<std::atomic<int>> builds(kKeys);
    const auto visitAll = [&] {
        for (int i = 0; i < kKeys; ++i) {
            const std::string key = "main::" + std::to_string(i);
            const ObtainResult result = cache.obtain(key, requestFor("cc"), Claim::yes, kForever);
            if (result.answer == CacheAnswer::Claimed) {
                ++builds[static_cast<std::size_t>(i)];
                EXPECT_TRUE(cache.upsert(key, recordOf("cc"), result.token));
            } else {
                EXPECT_EQ(result.answer, CacheAnswer::Hit);
            }
        }
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
