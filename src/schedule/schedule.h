// What is to be done, in which order, and how much of it at a time.
//
// Nodes wait for each other and for the files that others make. The order in which they are added
// is one in which they could be worked off one after another; a node waits only for earlier ones.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <queue>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "base/text_lookup.h"
#include "schedule/workers.h"

namespace Vesk {

using NodeId = std::size_t;

/// What a node says when its turn comes.
enum class Turn {
    Run,
    Nothing,  ///< there is nothing to run: it is done
    Failed,
};

/// How a node ended.
enum class NodeEnd {
    Done,
    Failed,
    Skipped,  ///< one that it waited for did not get done, or all was stopped
};

/// A piece of work. All but `work` is called on the thread that owns the schedule, and throws
/// nothing.
struct ScheduleNode {
    std::string owner;                    ///< who is named when two make one file
    std::vector<NodeId> after;            ///< begins when these are done
    std::vector<std::string_view> reads;  ///< and when the files that others make of these are made
    std::vector<std::string> makes;
    unsigned slots = 1;    ///< how many places it takes among what runs
    double seconds = 1.0;  ///< how long it will take, as far as known

    /// Called when its turn has come. Empty: nothing to run; such a node does not wait for a place.
    std::function<Turn()> ask;

    /// After Turn::Run, on some thread. Whether it succeeded. Throws nothing.
    std::function<bool()> work;

    /// Called once, whatever happened. Answers whether the node is done; may be empty.
    std::function<bool(NodeEnd)> end;
};

/// The state is touched by one thread only, that of the caller. What may wait says so. Callbacks
/// may call `stop`, and nothing else that changes the schedule.
class Schedule {
  public:
    struct Options {
        unsigned limit = 1;                     ///< places for what runs
        std::function<bool()> mayStart = {};    ///< false: stops; asked before anything is begun
        std::function<void()> onInterval = {};  ///< called now and then while waiting
        std::chrono::milliseconds interval{30'000};

        /// Called before a wait with its limit; returns the limit that holds. Empty: the same.
        std::function<std::chrono::milliseconds(std::chrono::milliseconds)> beforeWaiting = {};
    };

    explicit Schedule(Options options) : options_(std::move(options)), workers_(options_.limit) {}

    /// Throws VeskException for a file that a node of another owner makes, or has made.
    void requireUnmade(std::string_view file, const std::string& owner) const;

    /// A file that an earlier node of the same owner makes is made after that.
    NodeId add(ScheduleNode body);

    bool finished(NodeId node) const { return nodes_[node].finished; }
    bool idle() const noexcept { return unfinished_ == 0; }
    std::size_t unfinished() const noexcept { return unfinished_; }

    /// The node that has still to make the file.
    std::optional<NodeId> makerOf(std::string_view file) const;

    /// Who makes the file, or has made it; null: nobody.
    const std::string* ownerOf(std::string_view file) const;

    /// Takes what has been finished and begins what can be. Does not wait.
    void advance() { advance(std::chrono::milliseconds(0)); }

    /// Waits until the node has ended, or all have. False when all was stopped before that and
    /// nothing runs any more.
    bool waitFor(NodeId node);
    bool waitForAll();

    /// Waits until one of those that run has ended, if any does.
    void waitForOne() { advance(options_.interval); }

    /// Nothing more is begun.
    void stop() noexcept { stopped_ = true; }
    bool stopped() const noexcept { return stopped_; }

    /// After a stop: waits for what runs, and ends the others as skipped.
    void abandon();

  private:
    struct Node {
        ScheduleNode body;
        std::vector<NodeId> followers;
        std::size_t waitsFor = 0;
        double priority = 0;  ///< seconds from its begin to the end of what follows
        bool finished = false;
        bool done = false;  ///< finished, and as it should be
        bool skipped = false;
    };

    struct Maker {
        NodeId node;
        std::string owner;
    };

    /// What waits for a place; the largest comes first.
    struct Ready {
        bool isShort;
        double priority;
        NodeId complement;  ///< of its number: of equal ones the earliest comes first

        friend bool operator<(const Ready& one, const Ready& other) noexcept {
            return std::tie(one.isShort, one.priority, one.complement) <
                   std::tie(other.isShort, other.priority, other.complement);
        }
    };

    void advance(std::chrono::milliseconds wait);
    void follow(std::vector<NodeId>& after, NodeId node) const;
    Ready readyEntry(NodeId number) const;
    void makeReady(NodeId number);
    void beginReady();
    void begin(NodeId number);
    void finish(NodeId number, NodeEnd end);
    void settle();
    void rankNodes();

    Options options_;
    std::deque<Node> nodes_;
    TextMap<Maker> makers_;
    std::priority_queue<Ready> ready_;
    std::vector<NodeId> immediate_;  ///< can end without being run
    std::size_t unfinished_ = 0;
    std::size_t firstUnfinished_ = 0;
    std::size_t unranked_ = 0;  ///< nodes that were added since priorities were last worked out
    unsigned used_ = 0;         ///< places
    std::size_t running_ = 0;
    std::chrono::steady_clock::time_point intervalBegan_ = std::chrono::steady_clock::now();
    bool stopped_ = false;
    bool abandoned_ = false;
    Workers workers_;  ///< last: its threads end first
};

}  // namespace Vesk
