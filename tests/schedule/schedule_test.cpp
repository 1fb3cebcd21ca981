// The order of work, the limit of what runs, and what failures lead to.

#include "schedule/schedule.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <random>
#include <thread>

#include "base/exception.h"

namespace Vesk::test {
namespace {

/// A schedule whose nodes are named by letters, and what became of them.
class Plan {
  public:
    explicit Plan(unsigned limit) : schedule_({limit}) {}

    /// A node that has something to run; it fails when its name is a capital letter.
    ScheduleNode node(char name, const std::vector<char>& after = {}, double seconds = 1) {
        ScheduleNode node;
        node.owner = std::string(1, name);
        node.seconds = seconds;
        for (const char other : after) {
            node.after.push_back(numbers_.at(other));
        }
        node.ask = [this, name] {
            begun_ += name;
            return Turn::Run;
        };
        node.work = [name] { return name >= 'a'; };
        node.end = [this, name](NodeEnd end) {
            ends_[name] = end;
            return end == NodeEnd::Done;
        };
        return node;
    }

    void add(ScheduleNode node) {
        const char name = node.owner.front();
        numbers_[name] = schedule_.add(std::move(node));
    }

    Schedule& schedule() { return schedule_; }
    NodeId number(char name) const { return numbers_.at(name); }
    const std::string& begun() const { return begun_; }

    /// d: done, f: failed, s: skipped; of the nodes in the order of their names.
    std::string ends() const {
        std::string text;
        for (const auto& [name, end] : ends_) {
            text += std::string(1, name) + (end == NodeEnd::Done     ? "d "
                                            : end == NodeEnd::Failed ? "f "
                                                                     : "s ");
        }
        return text;
    }

  private:
    std::map<char, NodeId> numbers_;
    std::string begun_;
    std::map<char, NodeEnd> ends_;
    Schedule schedule_;
};

TEST(Schedule, FilesOrderTheNodesThatMakeAndReadThem) {
    Plan plan(1);
    ScheduleNode maker = plan.node('m');
    maker.makes = {"/x"};
    plan.add(std::move(maker));
    ScheduleNode reader = plan.node('a', {}, 9);  // first, if it did not wait
    reader.reads = {"/y", "/x"};
    plan.add(std::move(reader));
    EXPECT_EQ(plan.schedule().makerOf("/x"), plan.number('m'));
    EXPECT_EQ(plan.schedule().makerOf("/y"), std::nullopt);
    EXPECT_TRUE(plan.schedule().waitForAll());
    EXPECT_EQ(plan.begun(), "ma");
    EXPECT_EQ(plan.schedule().makerOf("/x"), std::nullopt) << "it is made";
    EXPECT_THROW(plan.schedule().requireUnmade("/x", "other"), VeskException);
    EXPECT_NO_THROW(plan.schedule().requireUnmade("/x", "m"));
}

TEST(Schedule, ShortStepsAndThenTheLongestWayAreBegunFirst) {
    Plan plan(1);
    plan.add(plan.node('a', {}, 3));
    plan.add(plan.node('b', {}, 1));
    plan.add(plan.node('c', {'b'}, 3));
    plan.add(plan.node('d', {'a', 'b'}, 0.5));
    plan.add(plan.node('e', {'a'}, 0.01));
    for (char other = ' '; other <= '_'; ++other) {  // enough to be worth a ranking
        ScheduleNode node = plan.node(other, {}, 0.1);
        node.work = [] { return true; };
        plan.add(std::move(node));
    }
    EXPECT_TRUE(plan.schedule().waitForAll());
    EXPECT_EQ(plan.begun().substr(0, 5), "baecd") << plan.begun();
}

TEST(Schedule, AsManyRunAsThereArePlaces) {
    constexpr unsigned kPlaces = 3;
    std::mutex mutex;
    std::condition_variable met;
    unsigned running = 0;
    unsigned most = 0;
    unsigned arrived = 0;
    Schedule schedule({kPlaces});
    for (int i = 0; i < 12; ++i) {
        ScheduleNode node;
        node.ask = [] { return Turn::Run; };
        node.work = [&] {
            std::unique_lock lock(mutex);
            most = std::max(most, ++running);
            ++arrived;
            met.notify_all();
            // Only full houses end.
            met.wait(lock, [&, mine = (arrived + kPlaces - 1) / kPlaces * kPlaces] {
                return arrived >= mine;
            });
            --running;
            return true;
        };
        schedule.add(std::move(node));
    }
    EXPECT_TRUE(schedule.waitForAll());
    EXPECT_EQ(most, kPlaces);
}

TEST(Schedule, WhatNeedsAFailedNodeIsSkippedWhenAllThatItWaitsForHasEnded) {
    Plan plan(2);
    plan.add(plan.node('F'));
    plan.add(plan.node('g', {'F'}));
    plan.add(plan.node('h'));
    ScheduleNode last = plan.node('i', {'g', 'h'});
    last.ask = nullptr;
    plan.add(std::move(last));
    plan.add(plan.node('j', {'h'}));
    EXPECT_TRUE(plan.schedule().waitForAll());
    EXPECT_EQ(plan.ends(), "Ff gs hd is jd ");
    plan.add(plan.node('k', {'F'}));
    EXPECT_TRUE(plan.schedule().waitForAll());
    EXPECT_EQ(plan.ends(), "Ff gs hd is jd ks ") << "also when it is added later";
}

TEST(Schedule, ATurnMayComeToNothingOrFail) {
    Plan plan(1);
    ScheduleNode nothing = plan.node('a');
    nothing.ask = [] { return Turn::Nothing; };
    plan.add(std::move(nothing));
    ScheduleNode fails = plan.node('b', {'a'});
    fails.ask = [] { return Turn::Failed; };
    plan.add(std::move(fails));
    plan.add(plan.node('c', {'b'}));
    EXPECT_TRUE(plan.schedule().waitForAll());
    EXPECT_EQ(plan.ends(), "ad bf cs ");
    EXPECT_EQ(plan.begun(), "");
}

TEST(Schedule, AfterAStopWhatRunsEndsAndTheRestIsSkipped) {
    Plan plan(1);
    ScheduleNode first = plan.node('F');
    first.end = [&plan, end = first.end](NodeEnd how) {
        plan.schedule().stop();
        return end(how);
    };
    plan.add(std::move(first));
    plan.add(plan.node('a'));
    plan.add(plan.node('b', {'a'}));
    EXPECT_FALSE(plan.schedule().waitForAll());
    EXPECT_EQ(plan.ends(), "Ff ");
    plan.schedule().abandon();
    EXPECT_EQ(plan.ends(), "Ff as bs ");
    EXPECT_TRUE(plan.schedule().idle());
}

/// Many nodes at random: what each waits for, how it ends, how many places it takes.
class RandomSchedule : public testing::TestWithParam<unsigned> {};

TEST_P(RandomSchedule, KeepsOrderAndLimit) {
    constexpr unsigned kNodes = 400;
    std::mt19937 random(GetParam());
    const auto pick = [&random](unsigned count) { return random() % count; };
    const unsigned limit = 1 + pick(8);
    enum class State { Waits, Done, Bad };
    std::vector<State> states(kNodes, State::Waits);
    std::vector<std::vector<NodeId>> after(kNodes);
    std::atomic<unsigned> used{0};
    unsigned ended = 0;
    Schedule schedule({limit});
    for (unsigned i = 0; i < kNodes; ++i) {
        for (unsigned n = pick(4); n > 0 && i > 0; --n) {
            after[i].push_back(pick(i));
        }
        const bool fails = pick(20) == 0;
        const unsigned slots = 1 + pick(2);
        ScheduleNode node;
        node.after = after[i];
        node.slots = slots;
        node.seconds = pick(10);
        node.ask = [&, i] {
            for (const NodeId other : after[i]) {
                EXPECT_EQ(states[other], State::Done);
            }
            return Turn::Run;
        };
        node.work = [&used, limit, slots, fails] {
            const unsigned now = used += slots;
            EXPECT_TRUE(now <= limit || now == slots);
            std::this_thread::yield();
            used -= slots;
            return !fails;
        };
        node.end = [&, i](NodeEnd end) {
            const bool allDone = std::ranges::all_of(
                after[i], [&](NodeId other) { return states[other] == State::Done; });
            EXPECT_EQ(states[i], State::Waits);
            EXPECT_EQ(end == NodeEnd::Skipped, !allDone);
            states[i] = end == NodeEnd::Done ? State::Done : State::Bad;
            ++ended;
            return end == NodeEnd::Done;
        };
        schedule.add(std::move(node));
        schedule.advance();
    }
    EXPECT_TRUE(schedule.waitForAll());
    EXPECT_EQ(ended, kNodes);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomSchedule, testing::Range(1u, 9u));

}  // namespace
}  // namespace Vesk::test
