#include "driver/visit_tree.h"

#include <utility>

#include "base/console.h"
#include "cache/expected_files.h"

namespace Vesk {

VisitTree::Node VisitTree::add(std::string prefix, const std::optional<ContentHash>& key,
                               ProjectCache& cache) {
    visits_.push_back({std::move(prefix), key, &cache, {}});
    return visits_.size() - 1;
}

void VisitTree::depends(Node dependant, std::size_t number, Node dependency) {
    std::vector<Node>& dependencies = visits_[dependant].dependencies;
    dependencies.resize(number);
    dependencies.push_back(dependency);
}

/// One walk over the tree, with a stack of its own, as a chain may have any length.
class VisitTree::Foreseen {
  public:
    Foreseen(VisitTree& tree, const VisitStore& store)
        : visits_(tree.visits_),
          store_(store),
          questions_(tree.questions_),
          files_(tree.files_),
          given_(tree.visits_.size()) {}

    /// False if the next run will not go this way.
    bool walk() {
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
        return files_.complete();
    }

    std::string takeTranscript() { return std::move(transcript_); }

  private:
    struct Open {
        Node visit = 0;
        KeptVisit kept;
        std::size_t next = 0;
    };

    /// What a dependant gets.
    struct Given {
        ContentHash outputs;
        std::string_view stamp;
    };

    bool enter(Node node) {
        const Visit& visit = visits_[node];
        auto kept = visit.key ? store_.findStanding(*visit.key) : std::nullopt;
        if (!kept || kept->dependencies.size() != visit.dependencies.size() ||
            !questions_.add(kept->askedFirst)) {
            return false;
        }
        say(visit, "Visiting target");
        transcript_ += kept->saidFirst;
        open_.push_back({node, std::move(*kept), 0});
        return true;
    }

    /// To the dependency whose turn it is, or past it when it has been visited.
    bool goDown(Open& top) {
        const Node dependency = visits_[top.visit].dependencies[top.next];
        if (!given_[dependency]) {
            return enter(dependency);
        }
        const KeptDependency& kept = top.kept.dependencies[top.next++];
        transcript_ += kept.said;
        return kept.outputs == given_[dependency]->outputs &&
               kept.stamp == given_[dependency]->stamp;
    }

    bool leave(const Open& top) {
        const Visit& visit = visits_[top.visit];
        const KeptVisit& kept = top.kept;
        if (!questions_.add(kept.askedLast) ||
            !visit.cache->expect(std::string(kept.recordKey), kept.record, files_)) {
            return false;
        }
        transcript_ += kept.saidLast;
        say(visit, "Build done");
        given_[top.visit] = {hashText(kept.outputs), kept.stamp};
        open_.pop_back();
        return true;
    }

    void say(const Visit& visit, std::string_view text) {
        console::appendNormal(transcript_, visit.prefix, text);
    }

    const std::vector<Visit>& visits_;
    const VisitStore& store_;
    platform::QuestionList& questions_;
    ExpectedFiles& files_;
    std::string transcript_;
    std::vector<Open> open_;
    std::vector<std::optional<Given>> given_;
};

std::optional<std::string> VisitTree::foresee(const VisitStore& store) {
    Foreseen foreseen(*this, store);
    return !visits_.empty() && foreseen.walk() ? std::optional(foreseen.takeTranscript())
                                               : std::nullopt;
}

}  // namespace Vesk
