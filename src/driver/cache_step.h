// Asking the cache whether a target must be built, and telling it what came of it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cache/freshness.h"
#include "cache/project_cache.h"
#include "cache/record_files.h"
#include "cache/record_writer.h"
#include "driver/build_setting.h"
#include "events/event.h"

namespace Vesk {

/// A target's place in its project's cache, for one visit. A claim that is not recorded is given
/// back when the step goes out of scope.
class CacheStep {
  public:
    CacheStep(ProjectCache& cache, std::string key, CacheRequest request,
              const DriverOptions& options, const events::Subject& target);
    ~CacheStep();
    CacheStep(const CacheStep&) = delete;
    CacheStep& operator=(const CacheStep&) = delete;

    /// Asks for the record, to claim it when it does not answer the request, and reports the
    /// answer and, at the detail level, why. Throws VeskException when the cache gives none.
    void ask();

    /// Instead of that, while files that the target reads have still to be made: looks at no file.
    /// `stale` may be asked then; before the first command the record has to be claimed, and when
    /// none has run `ask` is to be called after all.
    void askLater();

    /// Claims the record unless that has been done. Throws as `ask` does.
    void claim();

    /// Whether one of the two has been called.
    bool asked() const noexcept { return asked_; }

    const CacheRequest& request() const noexcept { return request_; }

    /// Calls `take` with the files that a recipe is known to read, what it declares and what it
    /// read in the last build, until it returns true. Whether it has.
    bool anyRead(std::size_t recipe, const std::function<bool(const std::string&)>& take) const;

    bool mustBuild() const noexcept { return obtained_.answer != CacheAnswer::Hit; }

    /// For a hit only: what the earlier build's completion gave, and its stamp.
    std::vector<Assignment> storedOutputs() const;
    std::string stamp() const;

    /// Whether a recipe, by its number among the target's, has to run. Asked stage by stage: what
    /// earlier stages have made counts. One that does not is taken over from the earlier build.
    bool stale(std::size_t recipe);

    /// Asked early, of a recipe for which nothing will be made any more: whether it does not have
    /// to run. It is taken over then.
    bool keepIfFresh(std::size_t recipe);

    /// A recipe has run, so long, and succeeded: from now on the build sees its outputs as they
    /// are.
    void ran(std::size_t recipe, double seconds = 0);

    /// How long recipes that run together took in earlier builds; `guess` where that is not known.
    double secondsOf(const std::vector<std::size_t>& recipes, double guess) const;

    /// What did not have to run, of recipes that have been asked about, or all of them after a hit;
    /// and how long it took when it last ran.
    KeptSteps kept() const;

    /// Whether the target makes files that tell whether it was built.
    bool makesFiles() const;

    /// Records a finished build, when there is a claim, with the outputs that only its completion
    /// gave. Warns of outputs that are missing. Returns whether the record will be a hit as long as
    /// nothing changes. Throws VeskException when the cache refuses.
    bool record(std::vector<Assignment> outputs, const std::string& stamp);

    /// Keeps what has run so far; in the middle of a build that goes on, or after a failure.
    void keepProgress();

  private:
    void compareWithRecord();
    void begin();
    void noteAbsent(const std::vector<std::string>& files, MadeFiles::Kind kind);
    void noteMade();
    void report();
    void giveReasons();
    void lookAnewAtOutputs();
    void takeOutputDirectory(CacheRequest::Part& part);

    ProjectCache& cache_;
    const DriverOptions& options_;
    std::string key_;
    CacheRequest request_;
    events::Subject seenAs_;
    ObtainResult obtained_;
    std::optional<Freshness> freshness_;  ///< nothing for a hit
    bool asked_ = false;
    bool gaveReasons_ = false;
    std::vector<std::string> absent_;  ///< outputs that were not there, of a target without steps
    std::vector<StepOutcome> outcomes_;
    std::vector<double> seconds_;  ///< of what ran; 0: not known
    std::int64_t startedAt_ = 0;   ///< before the first command
};

/// On how many threads work of so many pieces is done: the smallest of the job count, the limit and
/// the number of pieces; 1 when the job count is 0 or 1. A negative job count means many.
unsigned workerCount(int jobCount, std::size_t limit, std::size_t pieces);

}  // namespace Vesk
