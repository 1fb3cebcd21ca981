// One visit of one target: from its text to its output context.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "driver/build_setting.h"
#include "driver/dependency_outputs.h"
#include "driver/input_context.h"
#include "driver/side_by_side.h"
#include "driver/standing_visits.h"
#include "driver/target_build.h"
#include "driver/tool_choice.h"
#include "driver/visit_memory.h"
#include "driver/visit_tree.h"

namespace Vesk {

/// The driver calls `begin`, then for each dependency in turn visits it and hands its outputs over,
/// then `finish`.
class TargetVisit {
  public:
    /// `key` tells this visit from all others of the build.
    TargetVisit(const BuildSetting& setting, TargetLocation location,
                std::vector<ValuePtr> arguments, std::string key);

    const TargetLocation& location() const noexcept { return location_; }
    const std::string& displayName() const noexcept { return seenAs_.target; }  ///< in messages
    const events::Subject& seenAs() const noexcept { return seenAs_; }
    const std::string& key() const noexcept { return key_; }
    std::optional<ContentHash> keptAs() const noexcept { return memory_->key(); }

    /// Puts this target's name in front of messages.
    void announce() const;
    std::string prefix() const { return "[" + displayName() + "] "; }

    /// Chooses the tool, assembles the input context, evaluates the conditions and lists the
    /// dependencies. Throws with a note that names the target.
    void begin();

    /// Whether there is a dependency whose turn it is.
    bool hasNext() const;

    /// Its number among the target's dependencies, from zero.
    std::size_t nextNumber() const noexcept { return next_; }

    struct Next {
        TargetLocation location;
        std::vector<ValuePtr> arguments;  ///< for its parameters
    };

    Next next();

    /// Takes its outputs and goes on to the one after it.
    void addOutputs(const TargetLocation& dependency, const TargetResult& result);

    /// The next one gives what it gave to the visit that is kept; goes on to the one after it.
    void passOver();

    /// The visit that it is in the tree of an earlier run, while it goes as that one went.
    std::optional<StandingVisits::Node> standsAs() const;

    /// It is this visit, if what is kept of it has not changed since.
    void standAs(StandingVisits::Node visit);

    /// What it gives if it is passed over as this visit. Nothing if that is not known any more.
    std::optional<TargetResult> resultAs(StandingVisits::Node visit) const;

    VisitTree::Node inTree() const noexcept { return inTree_; }
    void setInTree(VisitTree::Node node) noexcept { inTree_ = node; }

    /// Goes on to the next one without outputs, after a failure; this target cannot be built then.
    void skipDependency();
    bool hasFailedDependency() const noexcept;

    /// Whether the target runs in every build, whatever the cache has. Once the context is
    /// resolved.
    bool alwaysRuns() const;
    /// After the last dependency: whether it is clear how the visit ends. Otherwise it is no longer
    /// the one that is kept: it is made, and gets all outputs once more.
    bool isSettled(SideBySide* others);

    /// Resolves the context and builds the target, or what of it the cache does not have; with
    /// `others` it may be built later, while others are.
    TargetResult finish(SideBySide* others);

    /// The same for a caller that builds the target itself, when all dependencies are built.
    /// Throws what making recipes throws.
    std::unique_ptr<TargetBuild> prepareBuild(Runs runs);

    /// The driver has done with it.
    void left() const;

    /// "in target main::app (/p/vesk.txt:3)", for messages.
    std::string note() const;

    /// The same for what this target asked for.
    std::string neededByNote() const;

  private:
    ContextLayers layers() const;
    ValuePtr sourceOf(const IdentifierPath& macro);
    std::vector<Assignment> boundParameters() const;
    void claimVariables();
    void resolve();
    void evaluate();
    void evaluateAfterAll(std::size_t visited);
    TargetLocation locateNext() const;
    std::vector<ValuePtr> argumentsForNext();
    std::optional<Next> nextAsKept();
    bool takeKeptOutputs(const TargetResult& result);
    bool endsAsKept(SideBySide* others);
    bool waitsForMore(const SideBySide* others) const;
    BuildSubject keptSubject() const;
    TargetResult keptResult(SideBySide* others);
    bool takesRecipes(const SideBySide* others);
    TargetResult buildAsKept(SideBySide* others);
    void tellWhatRuns(const TargetBuild& build, bool alongside) const;
    void tellEntered() const;
    void tellKept(const KeptVisit& kept) const;
    VisitMemory::Watch watch(VisitMemory::Part part);
    std::unique_ptr<TargetBuild> targetBuild();
    BuildSubject subject() const;
    void waitForStamp(SideBySide& others, const ScheduledBuild& dependency) const;
    void takeStamps(SideBySide& others);
    TargetResult build(SideBySide* others);
    std::string cacheKey() const;

    const BuildSetting& setting_;
    TargetLocation location_;
    std::vector<ValuePtr> arguments_;
    std::string key_;
    events::Subject seenAs_;
    ToolChoice choice_;
    std::shared_ptr<VisitMemory> memory_;
    std::optional<InputContext> input_;
    std::optional<DependencyOutputs> outputs_;
    std::vector<DependencyRecord> dependencies_;
    std::vector<DependencyStamp> stamps_;
    ScheduledBuild::Dependencies scheduled_;  ///< for each stamp; null: it was built at once
    std::size_t next_ = 0;
    std::size_t repeated_ = 0;  ///< of so many dependencies the messages have been written before
    std::optional<KeptRecipes> recipes_;  ///< of the kept visit, where only files differ
    std::optional<StandingVisits::Node> standsAs_;
    VisitTree::Node inTree_ = 0;
    bool failedDependency_ = false;
    bool overlaps_ = false;
};

}  // namespace Vesk
