#include "driver/standing_visits.h"

#include <algorithm>
#include <utility>

#include "platform/recorder.h"

namespace Vesk {

StandingVisits::StandingVisits(KeptTree tree, std::string_view transcript,
                               std::string_view recording,
                               const std::vector<KeptTree::Question>& differing)
    : tree_(std::move(tree)),
      transcript_(transcript),
      recording_(recording),
      differs_(tree_.visits().size()),
      affected_(tree_.visits().size()),
      progress_(tree_.visits().size()),
      askedAfter_(tree_.endOfQuestions) {
    std::vector<bool> differs(tree_.endOfQuestions);
    for (const KeptTree::Question number : differing) {
        differs[number] = true;
        differing_.insert(platform::subjectOf(question(number)));
    }
    findAffected(differs);
}

/// Every visit ends after those that it depends on.
void StandingVisits::findAffected(const std::vector<bool>& differing) {
    std::vector<Node> open;
    const auto endThoseBefore = [&](Node next) {
        for (; !open.empty() && tree_.visits()[open.back()].end <= next; open.pop_back()) {
            const Node ended = open.back();
            differs_[ended] = tree_.visits()[ended].isOpen ||
                              std::ranges::any_of(tree_.questions(ended),
                                                  [&](auto number) { return differing[number]; });
            affected_[ended] = differs_[ended] ||
                               std::ranges::any_of(tree_.dependencies(ended), [&](Node dependency) {
                                   return affected_[dependency];
                               });
        }
    };
    const auto count = static_cast<Node>(tree_.visits().size());
    for (Node i = 0; i < count; ++i) {
        endThoseBefore(i);
        open.push_back(i);
    }
    endThoseBefore(count);
}

std::optional<StandingVisits::Node> StandingVisits::find(const ContentHash& key) {
    if (byKey_.empty()) {
        byKey_.reserve(tree_.visits().size());
        for (Node i = 0; i < tree_.visits().size(); ++i) {
            byKey_.emplace(tree_.visits()[i].key.low, i);
        }
    }
    const auto found = byKey_.find(key.low);
    return found != byKey_.end() && tree_.visits()[found->second].key == key
               ? std::optional(found->second)
               : std::nullopt;
}

bool StandingVisits::mayPass(Node visit) const {
    const Node end = tree_.visits()[visit].end;
    const auto isSettled = [&](Node dependency) {
        return (dependency >= visit && dependency < end) || isPassed(dependency);
    };
    for (Node i = visit; i < end; ++i) {
        if (affected_[i] || progress_[i] != Progress::Ahead ||
            !std::ranges::all_of(tree_.dependencies(i), isSettled)) {
            return false;
        }
    }
    return true;
}

bool StandingVisits::isStillAnswered(KeptTree::Question number,
                                     const std::function<bool(const std::string&)>& isToBeMade) {
    const std::string_view asked = question(number);
    const std::string_view subject = platform::subjectOf(asked);
    const bool isMade = made_.contains(subject);
    if (!isMade && askedAfter_[number] == changes_) {
        return true;
    }
    if ((isMade && isToBeMade(std::string(subject))) || !platform::stillValid(asked)) {
        return false;
    }
    askedAfter_[number] = changes_;
    return true;
}

/// What depends on one that does not stand any more comes to it, and finds that it is not passed.
bool StandingVisits::stillStands(Node visit,
                                 const std::function<bool(const std::string&)>& isToBeMade) {
    if (changes_ == 0 && made_.empty()) {
        return true;
    }
    bool allStand = true;
    for (Node i = visit; i < tree_.visits()[visit].end; ++i) {
        affected_[i] = !std::ranges::all_of(tree_.questions(i), [&](KeptTree::Question number) {
            return isStillAnswered(number, isToBeMade);
        });
        allStand = allStand && !affected_[i];
    }
    return allStand;
}

bool StandingVisits::asksTheSame(Node visit,
                                 const std::function<bool(const std::string&)>& isToBeMade) {
    return !differs_[visit] &&
           std::ranges::all_of(tree_.questions(visit), [&](KeptTree::Question number) {
               return isStillAnswered(number, isToBeMade);
           });
}

bool StandingVisits::knowsFilesOf(Node visit) const {
    return changes_ == 0 && !tree_.visits()[visit].isOpen;
}

bool StandingVisits::overlaps(Node visit) const {
    const auto first = tree_.visits().begin();
    return std::all_of(first + visit, first + tree_.visits()[visit].end,
                       [](const KeptTree::Visit& each) { return each.overlaps; });
}

std::string_view StandingVisits::pass(Node visit) {
    const auto first = progress_.begin();
    std::fill(first + visit, first + tree_.visits()[visit].end, Progress::Passed);
    return saidBy(visit);
}

std::string_view StandingVisits::saidBy(Node visit) const {
    const KeptTree::Visit& by = tree_.visits()[visit];
    return transcript_.substr(by.saidFrom, by.saidTo - by.saidFrom);
}

std::string_view StandingVisits::saidFirst() const {
    return transcript_.substr(0, tree_.visits().front().saidFrom);
}

/// In the recording.
std::size_t StandingVisits::bytesBefore(KeptTree::Question number) {
    std::size_t bytes = 0;
    for (KeptTree::Question i = 0; i < number; ++i) {
        bytes += question(i).size();
    }
    return bytes;
}

std::string_view StandingVisits::askedFirst() {
    return recording_.substr(0, bytesBefore(tree_.firstQuestion));
}

std::string_view StandingVisits::askedLast() {
    return recording_.substr(bytesBefore(tree_.endOfQuestions));
}

std::string_view StandingVisits::question(KeptTree::Question number) {
    if (questions_.empty()) {
        questions_ = platform::questionsIn(recording_);
    }
    return questions_[number];
}

std::vector<std::string> StandingVisits::targetsPassed() const {
    std::vector<std::string> targets;
    for (Node i = 0; i < tree_.visits().size(); ++i) {
        if (isPassed(i) && !tree_.visits()[i].target.empty()) {
            targets.emplace_back(tree_.visits()[i].target);
        }
    }
    return targets;
}

KeptTree StandingVisits::treeOfFailure() const {
    KeptTree tree = tree_;
    for (Node i = 0; i < tree_.visits().size(); ++i) {
        if (affected_[i] || progress_[i] == Progress::Visited) {
            tree.setOpen(i);
        }
    }
    return tree;
}

}  // namespace Vesk
