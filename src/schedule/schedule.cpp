#include "schedule/schedule.h"

#include <algorithm>
#include <utility>

#include "base/exception.h"

namespace Vesk {

namespace {

/// Priorities are worked out again when so many nodes are new, or an eighth of all.
constexpr std::size_t kFewNodes = 64;

/// Steps of up to so many seconds go first: they delay the others by next to nothing, and what
/// waits for them can begin. Left to the end, hundreds of archives would be put together there in a
/// row.
constexpr double kShort = 0.05;

}  // namespace

void Schedule::requireUnmade(std::string_view file, const std::string& owner) const {
    const std::string* const other = ownerOf(file);
    if (other != nullptr && *other != owner) {
        throw VeskException("'" + std::string(file) + "' is made by two targets: " + *other +
                            " and " + owner + ".");
    }
}

std::optional<NodeId> Schedule::makerOf(std::string_view file) const {
    if (idle()) {
        return std::nullopt;
    }
    const auto found = makers_.find(file);
    return found == makers_.end() || nodes_[found->second.node].finished
               ? std::nullopt
               : std::optional(found->second.node);
}

const std::string* Schedule::ownerOf(std::string_view file) const {
    const auto found = makers_.find(file);
    return found == makers_.end() ? nullptr : &found->second.owner;
}

/// Adds a node to those that are waited for, if it is one to wait for.
void Schedule::follow(std::vector<NodeId>& after, NodeId node) const {
    if (!nodes_[node].finished || !nodes_[node].done) {
        after.push_back(node);
    }
}

NodeId Schedule::add(ScheduleNode body) {
    const NodeId number = nodes_.size();
    std::vector<NodeId> after;
    for (const NodeId node : body.after) {
        follow(after, node);
    }
    for (const std::string_view file : body.reads) {
        if (const auto found = makers_.find(file); found != makers_.end()) {
            follow(after, found->second.node);
        }
    }
    for (const std::string& file : body.makes) {
        const auto [maker, isNew] = makers_.try_emplace(file, Maker{number, body.owner});
        if (!isNew) {
            follow(after, maker->second.node);
            maker->second.node = number;
        }
    }
    std::ranges::sort(after);
    const auto rest = std::ranges::unique(after);
    after.erase(rest.begin(), rest.end());

    body.after.clear();
    body.reads.clear();
    Node& node = nodes_.emplace_back();
    node.body = std::move(body);
    node.priority = node.body.seconds;
    for (const NodeId earlier : after) {
        if (nodes_[earlier].finished) {
            node.skipped = true;
        } else {
            nodes_[earlier].followers.push_back(number);
            ++node.waitsFor;
        }
    }
    ++unfinished_;
    ++unranked_;
    if (node.waitsFor == 0) {
        makeReady(number);
    }
    return number;
}

Schedule::Ready Schedule::readyEntry(NodeId number) const {
    const Node& node = nodes_[number];
    return {node.body.seconds <= kShort, node.priority, ~number};
}

void Schedule::makeReady(NodeId number) {
    const Node& node = nodes_[number];
    if (node.skipped || !node.body.ask) {
        immediate_.push_back(number);
    } else {
        ready_.push(readyEntry(number));
    }
}

/// Followers come after the nodes that they follow, so one walk from the end is enough.
void Schedule::rankNodes() {
    if (unranked_ < std::max(kFewNodes, unfinished_ / 8)) {
        return;
    }
    unranked_ = 0;
    while (firstUnfinished_ < nodes_.size() && nodes_[firstUnfinished_].finished) {
        ++firstUnfinished_;
    }
    for (NodeId number = nodes_.size(); number-- > firstUnfinished_;) {
        Node& node = nodes_[number];
        double rest = 0;
        for (const NodeId follower : node.followers) {
            rest = std::max(rest, nodes_[follower].priority);
        }
        node.priority = node.body.seconds + rest;
    }
    std::priority_queue<Ready> ranked;
    for (; !ready_.empty(); ready_.pop()) {
        ranked.push(readyEntry(~ready_.top().complement));
    }
    ready_ = std::move(ranked);
}

void Schedule::finish(NodeId number, NodeEnd end) {
    const bool accepted = !nodes_[number].body.end || nodes_[number].body.end(end);
    Node& node = nodes_[number];
    node.finished = true;
    node.done = end == NodeEnd::Done && accepted;
    --unfinished_;
    node.body = ScheduleNode();
    for (const NodeId follower : std::exchange(node.followers, {})) {
        nodes_[follower].skipped |= !node.done;
        if (--nodes_[follower].waitsFor == 0 && !abandoned_) {
            makeReady(follower);
        }
    }
}

/// Ends what needs no place.
void Schedule::settle() {
    while (!immediate_.empty()) {
        for (const NodeId number : std::exchange(immediate_, {})) {
            finish(number, nodes_[number].skipped ? NodeEnd::Skipped : NodeEnd::Done);
        }
    }
}

void Schedule::begin(NodeId number) {
    Node& node = nodes_[number];
    switch (node.body.ask()) {
        case Turn::Run:
            used_ += node.body.slots;
            ++running_;
            workers_.begin(number, node.body.work);
            break;
        case Turn::Nothing:
            finish(number, NodeEnd::Done);
            break;
        case Turn::Failed:
            finish(number, NodeEnd::Failed);
            break;
    }
}

void Schedule::beginReady() {
    settle();
    if (ready_.empty() || stopped_) {
        return;
    }
    rankNodes();
    while (!ready_.empty() && !stopped_) {
        const NodeId number = ~ready_.top().complement;
        const unsigned slots = nodes_[number].body.slots;
        if (used_ > 0 && (slots >= options_.limit || used_ > options_.limit - slots)) {
            return;
        }
        if (options_.mayStart && !options_.mayStart()) {
            stop();
            return;
        }
        ready_.pop();
        begin(number);
        settle();
    }
}

void Schedule::advance(std::chrono::milliseconds wait) {
    if (idle()) {
        return;
    }
    if (running_ > 0 && wait.count() > 0 && options_.beforeWaiting) {
        wait = options_.beforeWaiting(wait);
    }
    if (running_ > 0) {
        for (const auto& [number, succeeded] : workers_.take(wait)) {
            used_ -= nodes_[number].body.slots;
            --running_;
            finish(number, succeeded ? NodeEnd::Done : NodeEnd::Failed);
        }
    }
    beginReady();
    const auto now = std::chrono::steady_clock::now();
    if (options_.onInterval && now - intervalBegan_ >= options_.interval) {
        intervalBegan_ = now;
        options_.onInterval();
    }
}

bool Schedule::waitFor(NodeId node) {
    advance();
    while (!finished(node)) {
        if (running_ == 0 && stopped_) {
            return false;
        }
        advance(options_.interval);
    }
    return true;
}

bool Schedule::waitForAll() {
    advance();
    while (!idle()) {
        if (running_ == 0 && stopped_) {
            return false;
        }
        advance(options_.interval);
    }
    return true;
}

void Schedule::abandon() {
    stop();
    waitForAll();
    abandoned_ = true;
    for (NodeId number = firstUnfinished_; number < nodes_.size(); ++number) {
        if (!nodes_[number].finished) {
            finish(number, NodeEnd::Skipped);
        }
    }
}

}  // namespace Vesk
