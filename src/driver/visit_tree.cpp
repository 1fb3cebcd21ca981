#include "driver/visit_tree.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/console.h"
#include "cache/expected_files.h"

namespace Vesk {

VisitTree::Node VisitTree::add(std::string target, std::string prefix,
                               const std::optional<ContentHash>& key, ProjectCache& cache) {
    visits_.push_back({std::move(target), std::move(prefix), key, &cache, 0, std::nullopt, {}});
    return visits_.size() - 1;
}

VisitTree::Node VisitTree::addPassed(StandingVisits::Node visit) {
    visits_.push_back({{}, {}, std::nullopt, nullptr, visit, std::nullopt, {}});
    return visits_.size() - 1;
}

void VisitTree::depends(Node dependant, std::size_t number, Node dependency) {
    std::vector<Node>& dependencies = visits_[dependant].dependencies;
    dependencies.resize(number);
    dependencies.push_back(dependency);
}

/// One walk over the tree, with a stack of its own, as a chain may have any length.
class VisitTree::Walk {
  public:
    Walk(VisitTree& tree, std::string transcript, VisitStore& store, StandingVisits* passed)
        : visits_(tree.visits_),
          store_(store),
          passed_(passed),
          questions_(tree.questions_),
          files_(tree.questions_),
          given_(tree.visits_.size()),
          keptPassed_(passed == nullptr ? 0 : passed->tree().visits().size(), kNone),
          questionsPassed_(passed == nullptr ? 0 : passed->tree().endOfQuestions, kNone) {
        foreseen_.transcript = std::move(transcript);
        if (passed_ != nullptr) {  // there will be about as much as there was
            foreseen_.transcript.reserve(passed_->transcript().size());
            questions_.reserve(passed_->tree().endOfQuestions, passed_->recording().size());
        }
    }

    /// False if the next run will not go this way.
    bool walk() {
        foreseen_.tree.firstQuestion = static_cast<KeptTree::Question>(questions_.size());
        foreseen_.tree.day = passed_ == nullptr ? today() : passed_->tree().day;
        if (!enter(0)) {
            return false;
        }
        while (!open_.empty()) {
            Open& top = open_.back();
            const bool goesOn =
                top.next < visits_[top.visit].dependencies.size() ? goDown(top) : leave(top);
            if (!goesOn) {
                return false;
            }
        }
        foreseen_.tree.endOfQuestions = static_cast<KeptTree::Question>(questions_.size());
        return true;
    }

    Foreseen take() { return std::move(foreseen_); }

  private:
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

    struct Open {
        Node visit = 0;
        KeptVisit kept;
        KeptTree::Node place = 0;
        std::size_t next = 0;
        std::vector<KeptTree::Node> dependencies;
        std::vector<KeptTree::Question> questions;
    };

    /// What a dependant gets.
    struct Given {
        KeptTree::Node place = 0;
        bool wasPassed = false;  ///< then it gives what it gave before
        ContentHash outputs;
        std::string_view stamp;
    };

    bool enter(Node node) {
        const Visit& visit = visits_[node];
        if (visit.cache == nullptr) {
            return addPassed(node);
        }
        auto kept = visit.key ? store_.findStanding(*visit.key) : std::nullopt;
        if (!kept || kept->dependencies.size() != visit.dependencies.size()) {
            return false;
        }
        std::string& transcript = foreseen_.transcript;
        const KeptTree::Node place = foreseen_.tree.begin(
            {.key = *visit.key,
             .kept = *store_.hash(*visit.key),
             .target = kept->hasRecipes ? std::string_view(visit.target) : std::string_view(),
             .overlaps = kept->overlaps,
             .saidFrom = transcript.size()});
        console::appendNormal(transcript, visit.prefix, "Visiting target");
        transcript += kept->saidFirst;
        Open& open = open_.emplace_back(Open{node, std::move(*kept), place, 0, {}, {}});
        if (visit.asksAs) {
            questions_.collect(nullptr);
            open.questions = questionsOf(*visit.asksAs);
            return true;
        }
        questions_.collect(&open.questions);
        return questions_.add(open.kept.askedFirst);
    }

    /// To the dependency whose turn it is, or past it when it has been visited.
    bool goDown(Open& top) {
        const Node dependency = visits_[top.visit].dependencies[top.next];
        const auto& given = given_[dependency];
        if (!given) {
            return enter(dependency);
        }
        const KeptDependency& kept = top.kept.dependencies[top.next++];
        foreseen_.transcript += kept.said;
        top.dependencies.push_back(given->place);
        return given->wasPassed || (kept.outputs == given->outputs && kept.stamp == given->stamp);
    }

    bool leave(Open& top) {
        const Visit& visit = visits_[top.visit];
        const KeptVisit& kept = top.kept;
        if (!visit.asksAs && !addAskedLast(top)) {
            return false;
        }
        foreseen_.transcript += kept.saidLast;
        console::appendNormal(foreseen_.transcript, visit.prefix, "Build done");
        foreseen_.tree.end(top.place, foreseen_.transcript.size(), top.dependencies, top.questions);
        given_[top.visit] = {top.place, false, hashText(kept.outputs), kept.stamp};
        open_.pop_back();
        return true;
    }

    bool addAskedLast(Open& top) {
        questions_.collect(&top.questions);
        const Visit& visit = visits_[top.visit];
        if (!questions_.add(top.kept.askedLast) ||
            !visit.cache->expect(std::string(top.kept.recordKey), top.kept.record, files_)) {
            return false;
        }
        std::ranges::sort(top.questions);
        top.questions.erase(std::unique(top.questions.begin(), top.questions.end()),
                            top.questions.end());
        return true;
    }

    /// With all that were passed together with it. False when they do not follow on what came
    /// before.
    bool addPassed(Node node) {
        const StandingVisits::Node head = visits_[node].passed;
        questions_.collect(nullptr);
        if (keptPassed_[head] == kNone) {
            const KeptTree::Visit& before = passed_->tree().visits()[head];
            const std::size_t saidFrom = foreseen_.transcript.size();
            for (StandingVisits::Node i = head; i < before.end; ++i) {
                if (!copyPassed(i, saidFrom - before.saidFrom)) {
                    return false;
                }
            }
            foreseen_.transcript += passed_->saidBy(head);
        }
        given_[node] = {keptPassed_[head], true, {}, {}};
        return true;
    }

    /// Those that it depends on, and that are not among the ones before it, follow it closely.
    bool copyPassed(StandingVisits::Node visit, std::size_t saidFurtherOn) {
        const KeptTree& before = passed_->tree();
        KeptTree::Visit copy = before.visits()[visit];
        const auto place = static_cast<KeptTree::Node>(foreseen_.tree.visits().size());
        std::vector<KeptTree::Node> dependencies;
        for (const StandingVisits::Node dependency : before.dependencies(visit)) {
            const bool follows = dependency > visit && dependency < copy.end;
            dependencies.push_back(follows ? place + (dependency - visit)
                                           : keptPassed_[dependency]);
        }
        if (keptPassed_[visit] != kNone ||
            std::ranges::find(dependencies, kNone) != dependencies.end()) {
            return false;
        }
        keptPassed_[visit] = place;
        copy.end = place + (copy.end - visit);
        copy.saidFrom += saidFurtherOn;
        copy.saidTo += saidFurtherOn;
        foreseen_.tree.add(copy, dependencies, questionsOf(visit));
        return true;
    }

    std::vector<KeptTree::Question> questionsOf(StandingVisits::Node passed) {
        std::vector<KeptTree::Question> numbers;
        for (const KeptTree::Question before : passed_->tree().questions(passed)) {
            KeptTree::Question& number = questionsPassed_[before];
            if (number == kNone) {
                number = questions_.addQuestion(passed_->question(before));
            }
            numbers.push_back(number);
        }
        return numbers;
    }

    const std::vector<Visit>& visits_;
    VisitStore& store_;
    StandingVisits* passed_;
    platform::QuestionList& questions_;
    ExpectedFiles files_;
    Foreseen foreseen_;
    std::vector<Open> open_;
    std::vector<std::optional<Given>> given_;
    std::vector<KeptTree::Node> keptPassed_;
    std::vector<KeptTree::Question> questionsPassed_;
};

std::optional<VisitTree::Foreseen> VisitTree::foresee(std::string transcript, VisitStore& store,
                                                      StandingVisits* passed) {
    if (visits_.empty()) {
        return std::nullopt;
    }
    Walk walk(*this, std::move(transcript), store, passed);
    const bool isKnown = walk.walk();
    questions_.collect(nullptr);
    return isKnown ? std::optional(walk.take()) : std::nullopt;
}

}  // namespace Vesk
