// What is kept of a visit from run to run.
//
// A visit that is kept is not made as long as everything goes as it went then: the target's text
// and its surroundings, the answers to what the visit asked, what its dependencies give, and the
// record in the cache, with the files that it names. When something differs on the way, the
// visit is made after all. What is made is kept in turn.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/console.h"
#include "cache/project_cache.h"
#include "driver/build_setting.h"
#include "driver/target_build.h"
#include "keep/visit_store.h"
#include "platform/recorder.h"

namespace Vesk {

/// What a run does with kept visits.
struct VisitKeeping {
    bool takes = false;   ///< visits that are kept are not made
    bool keeps = false;   ///< visits that are made are kept
    bool checks = false;  ///< all are made, and those that are kept must have gone the same way
};

/// For all visits of a run.
class VisitKeeper {
  public:
    /// `surroundings`: a hash of all but a target's text that decides how it is visited in a
    /// project.
    VisitKeeper(VisitStore& store, VisitKeeping use,
                std::function<ContentHash(const Project&)> surroundings)
        : store_(store), use_(use), surroundings_(std::move(surroundings)) {}

    VisitStore& store() noexcept { return store_; }
    const VisitKeeping& use() const noexcept { return use_; }

    const ContentHash& surroundingsIn(const Project& project);

  private:
    VisitStore& store_;
    VisitKeeping use_;
    std::function<ContentHash(const Project&)> surroundings_;
    std::unordered_map<const Project*, ContentHash> known_;
};

/// For one visit. Without a keeper nothing is kept.
class VisitMemory {
  public:
    /// `displayName`: of the target, in messages.
    VisitMemory(VisitKeeper* keeper, const TargetLocation& location, const std::string& displayName,
                const std::vector<ValuePtr>& arguments);

    /// Under which it is kept; nothing: it cannot be.
    std::optional<ContentHash> key() const noexcept {
        return keeper_ != nullptr ? std::optional(key_) : std::nullopt;
    }

    /// Looks the visit up, and holds on to it if it may go the same way; repeats what it said then.
    void begin();

    /// The visit that goes the same way so far; null: it has to be made, or is made to be checked.
    const KeptVisit* taken() const noexcept;

    /// Whether there is one, taken or only to be checked.
    bool holds() const noexcept { return kept_.has_value(); }

    /// Whether the one that is held may be built while others are.
    bool overlaps() const noexcept { return kept_->overlaps; }

    /// It does not go the same way.
    void leave() noexcept { kept_.reset(); }

    /// Whether a dependency, by its number, gave the same again.
    bool sameOutputs(std::size_t number, const TargetResult& result) const;

    /// Whether all that was asked after the dependencies has the same answers, and what the cache
    /// has stands.
    bool ends(ProjectCache& cache, const ProjectCache::StandingQuestion& question);

    /// What the visit gives that is kept, if this is its hash (see VisitStore::hash).
    std::optional<TargetResult> resultOf(const ContentHash& visit) const;

    /// Whether the visit that is taken has this hash.
    bool takesThat(const ContentHash& visit) const;

    /// The same, where it is known already.
    void stands() { keeper_->store().confirm(key_); }

    /// When that is not so, because of files alone: the recipes that the visit would make again.
    std::optional<KeptRecipes> recipes(ProjectCache& cache) const;

    /// They have run, or none had to, and the cache has their record now.
    void builtAgain(ProjectCache& cache);

    /// Where a visit that is made asks and says something.
    enum class Part { first, arguments, outputs, last };

    /// Watches a visit that is made.
    class Watch {
      public:
        Watch(VisitMemory& memory, Part part, console::MessageCopy::Shown shown);

      private:
        std::optional<platform::QuestionScope> questions_;
        std::optional<console::MessageCopy> messages_;
    };

    /// A dependency is about to be visited, and then gives its outputs.
    void depends(const DependencyReference& reference, const std::vector<ValuePtr>& arguments);
    void gets(const TargetResult& result);

    /// The visit is made from its beginning.
    void forgetMade() noexcept { made_ = {}; }

    /// The visit has been made, and the cache has its record now. Keeps it, or checks it against
    /// the one that is kept: throws VeskException when that one went another way.
    void made(const TargetBuild& build, bool overlaps, const TargetResult& result, bool hit);

  private:
    struct Dependency {
        DependencyReference reference;
        std::optional<std::string> arguments;
        std::optional<ContentHash> outputs;
        std::string said;
    };

    /// Of a visit that is made.
    struct Made {
        platform::Questions askedFirst;
        platform::Questions askedLast;
        std::string saidFirst;
        std::string saidLast;
        std::string saidOfArguments;  ///< has no place among what is kept
        std::vector<Dependency> dependencies;
    };

    std::string& saidIn(Part part);
    std::optional<KeptVisit> visitMade(const TargetBuild& build, bool overlaps,
                                       const TargetResult& result) const;
    static bool isSecret(const BuildSubject& subject, std::string_view kept);
    void check(const KeptVisit& made, const std::string& name, bool hit) const;

    VisitKeeper* keeper_;  ///< null: nothing of this visit can be kept
    ContentHash key_;
    ContentHash digest_;
    std::optional<KeptVisit> kept_;
    Made made_;
};

}  // namespace Vesk
