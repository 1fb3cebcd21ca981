// The visits of a build in their order, and with it what the next run with the same command line
// will do if nothing changes: it takes all of them as they were kept.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/content_hash.h"
#include "cache/project_cache.h"
#include "driver/standing_visits.h"
#include "keep/kept_tree.h"
#include "keep/visit_store.h"
#include "platform/question_list.h"

namespace Vesk {

class VisitTree {
  public:
    using Node = std::size_t;

    VisitTree() = default;
    VisitTree(const VisitTree&) = delete;
    VisitTree& operator=(const VisitTree&) = delete;

    /// The first one is the root. `target`: its name in messages, `prefix`: what they begin with.
    /// `key`: of what is kept of it; nothing: it is not kept.
    Node add(std::string target, std::string prefix, const std::optional<ContentHash>& key,
             ProjectCache& cache);

    /// One that is passed over.
    Node addPassed(StandingVisits::Node visit);

    /// It asks what it asked as a visit of an earlier run.
    void asksAs(Node visit, StandingVisits::Node earlier) { visits_[visit].asksAs = earlier; }

    /// Dependency `number` of `dependant`, counted from zero. A later call replaces an earlier one.
    void depends(Node dependant, std::size_t number, Node dependency);

    /// What the next run would do.
    struct Foreseen {
        std::string transcript;  ///< `transcript` as it was given, and what visits write
        KeptTree tree;           ///< its texts belong to this tree, and to what has been passed
    };

    /// That run writes `transcript` before its first visit. All that it would ask while it visits
    /// has then been added to `questions`. `passed`: from which visits have been; null: none has.
    /// Nothing if it may go another way: a visit has not been kept. To be called when the build is
    /// done, and caches and store are saved.
    std::optional<Foreseen> foresee(std::string transcript, VisitStore& store,
                                    StandingVisits* passed);

    platform::QuestionList& questions() noexcept { return questions_; }

  private:
    struct Visit {
        std::string target;
        std::string prefix;
        std::optional<ContentHash> key;
        ProjectCache* cache = nullptr;  ///< null: it has been passed
        StandingVisits::Node passed = 0;
        std::optional<StandingVisits::Node> asksAs;
        std::vector<Node> dependencies;
    };

    class Walk;

    std::vector<Visit> visits_;
    platform::QuestionList questions_;
};

}  // namespace Vesk
