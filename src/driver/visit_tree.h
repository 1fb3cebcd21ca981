// The visits of a build in their order, and with it what the next run with the same command line
// will do if nothing changes: it takes all of them as they were kept.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/content_hash.h"
#include "cache/project_cache.h"
#include "keep/visit_store.h"
#include "platform/question_list.h"

namespace Vesk {

class VisitTree {
  public:
    using Node = std::size_t;

    VisitTree() = default;
    VisitTree(const VisitTree&) = delete;
    VisitTree& operator=(const VisitTree&) = delete;

    /// The first one is the root. `prefix`: of its messages. `key`: of what is kept of it; nothing:
    /// it is not kept.
    Node add(std::string prefix, const std::optional<ContentHash>& key, ProjectCache& cache);

    /// Dependency `number` of `dependant`, counted from zero. A later call replaces an earlier one.
    void depends(Node dependant, std::size_t number, Node dependency);

    /// The files of records that stand are added to these.
    ExpectedFiles& files() noexcept { return files_; }

    /// What the next run would write while it visits, as a transcript. All that it would ask has
    /// then been added to `questions`. Nothing if it may go another way: a visit has not been kept.
    /// To be called when the build is done, and caches and store are saved.
    std::optional<std::string> foresee(const VisitStore& store);

    platform::QuestionList& questions() noexcept { return questions_; }

  private:
    struct Visit {
        std::string prefix;  ///< of its messages
        std::optional<ContentHash> key;
        ProjectCache* cache = nullptr;
        std::vector<Node> dependencies;
    };

    class Foreseen;

    std::vector<Visit> visits_;
    platform::QuestionList questions_;
    ExpectedFiles files_{questions_};
};

}  // namespace Vesk
