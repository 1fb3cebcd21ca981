#include "driver/scheduled_build.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/collector.h"
#include "base/console.h"
#include "base/interruption.h"
#include "base/report.h"
#include "driver/build_errors.h"
#include "driver/target_news.h"
#include "platform/interrupt.h"

namespace Vesk {

ScheduledBuild::ScheduledBuild(SharedSchedule& shared, std::unique_ptr<TargetBuild> build,
                               Dependencies dependencies)
    : shared_(shared),
      build_(std::move(build)),
      dependencies_(std::move(dependencies)),
      seenAs_(build_->subject().seenAs),
      isList_(build_->isList()) {}

TargetResult ScheduledBuild::begin() {
    TargetResult result = build_->expected();
    stamp_ = result.stamp;
    stampKnown_ = build_->stampIsKnown();
    for (const CacheRequest::Part& part : build_->cache().request().parts) {
        for (const std::string& file : part.writes) {
            if (&part != build_->cache().request().parts.data()) {
                shared_.schedule.requireUnmade(file, name());
            }
        }
    }
    for (const std::string& file : build_->ownFiles()) {
        shared_.schedule.requireUnmade(file, name());
    }
    addStages();
    addCompletion();
    addSources();
    result.scheduled = shared_from_this();
    return result;
}

NodeId ScheduledBuild::join(std::vector<NodeId> nodes) {
    ScheduleNode node;
    node.owner = name();
    node.after = std::move(nodes);
    node.seconds = 0;
    return shared_.schedule.add(std::move(node));
}

std::vector<NodeId> ScheduledBuild::unfinishedDependencies() const {
    std::vector<NodeId> nodes;
    for (const auto& dependency : dependencies_) {
        nodes.push_back(dependency->completion());
    }
    return nodes;
}

/// Each stage after the one before it.
void ScheduledBuild::addStages() {
    std::map<std::uint32_t, std::vector<std::size_t>> stages;
    for (std::size_t i = 0; i < build_->recipes().size(); ++i) {
        stages[build_->recipes()[i].stage].push_back(i);
    }
    std::vector<NodeId> before;
    for (auto& [number, members] : stages) {
        if (before.size() > 1 && members.size() > 1) {
            before = {join(std::move(before))};
        }
        const std::size_t first = recipeNodes_.size();
        if (isList_) {
            addBatch(std::move(members), before);
        } else {
            for (const std::size_t recipe : members) {
                if (!before.empty() || !isKept(recipe)) {
                    addBatch({recipe}, before);
                }
            }
        }
        before.assign(recipeNodes_.begin() + static_cast<std::ptrdiff_t>(first),
                      recipeNodes_.end());
    }
}

/// Of many recipes few are stale, and the others need no nodes: those that nothing which is still
/// to be made can make stale.
bool ScheduledBuild::isKept(std::size_t number) {
    CacheStep& cache = build_->cache();
    const bool compiles = build_->recipes()[number].role == RecipeRole::Compile;
    const CacheRequest::Part& part = cache.request().parts[kFirstRecipePart + number];
    if (part.judged == Judged::WithTarget ||
        (!dependencies_.empty() && (!compiles || sourcesAreMissing()))) {
        return false;
    }
    const auto isToBeMade = [this](const std::string& file) {
        return shared_.schedule.makerOf(file).has_value();
    };
    return !cache.anyRead(number, isToBeMade) && std::ranges::none_of(part.writes, isToBeMade) &&
           cache.keepIfFresh(number);
}

bool ScheduledBuild::sourcesAreMissing() const {
    return std::ranges::any_of(dependencies_, [this](const auto& dependency) {
        return dependency->sources() && !shared_.schedule.finished(*dependency->sources());
    });
}

void ScheduledBuild::waitForSources(std::vector<NodeId>& after) {
    if (!sourcesBelow_) {
        std::vector<NodeId> nodes;
        for (const auto& dependency : dependencies_) {
            if (dependency->sources() && !shared_.schedule.finished(*dependency->sources())) {
                nodes.push_back(*dependency->sources());
            }
        }
        if (nodes.empty()) {
            return;
        }
        sourcesBelow_ = nodes.size() == 1 ? nodes.front() : join(std::move(nodes));
    }
    after.push_back(*sourcesBelow_);
}

/// In a first build no step's time is known. Archiving and linking take a fraction of a compiler's
/// time; if all counted alike, the program's own sources would be compiled after the last library
/// has been put together, and the link would wait for them alone.
double ScheduledBuild::guessFor(const std::vector<std::size_t>& batch) const {
    const auto links = [this](std::size_t i) {
        return build_->recipes()[i].role == RecipeRole::Link;
    };
    return std::ranges::all_of(batch, links) ? 0.05 : 1.0;
}

void ScheduledBuild::addBatch(std::vector<std::size_t> recipes, std::vector<NodeId> after) {
    CacheStep& cache = build_->cache();
    auto batch = std::make_shared<Batch>();
    ScheduleNode node;
    std::vector<std::string> reads;
    const auto isToBeMade = [this](const std::string& file) {
        return shared_.schedule.makerOf(file).has_value();
    };
    bool makesSources = false;
    for (const std::size_t number : recipes) {
        const Recipe& recipe = build_->recipes()[number];
        if (!shared_.schedule.idle()) {
            cache.anyRead(number, [&reads](const std::string& file) {
                reads.push_back(file);
                return false;
            });
        }
        if (recipe.role == RecipeRole::Compile) {
            waitForSources(after);
            // Among its flags, such as a launcher or a header for all sources.
            std::ranges::move(build_->mentioned(number, isToBeMade), std::back_inserter(reads));
        } else {
            std::ranges::copy(unfinishedDependencies(), std::back_inserter(after));
        }
        makesSources = makesSources || recipe.role == RecipeRole::Any;
        const auto& writes = cache.request().parts[kFirstRecipePart + number].writes;
        node.makes.insert(node.makes.end(), writes.begin(), writes.end());
    }
    std::ranges::move(build_->ownFiles(), std::back_inserter(node.makes));
    const unsigned most = shared_.setting.options.maxCommands;
    const auto size = static_cast<unsigned>(recipes.size());
    batch->recipes = std::move(recipes);
    node.owner = name();
    node.after = std::move(after);
    node.reads.assign(reads.begin(), reads.end());
    node.slots = most == 0 ? size : std::min(size, most);
    node.seconds = cache.secondsOf(batch->recipes, guessFor(batch->recipes));
    node.ask = [self = shared_from_this(), batch] { return self->ask(*batch); };
    node.work = [batch, prefix = build_->prefix(), most] {
        batch->stage->runCollected(prefix, most);
        return std::ranges::all_of(batch->stage->jobs(),
                                   [](const auto& job) { return job->succeeded.load(); });
    };
    node.end = [self = shared_from_this(), batch](NodeEnd end) { return self->ended(*batch, end); };
    recipeNodes_.push_back(shared_.schedule.add(std::move(node)));
    shared_.setting.events->expected(1);
    if (makesSources) {
        sourceNodes_.push_back(recipeNodes_.back());
    }
}

void ScheduledBuild::addCompletion() {
    ScheduleNode node;
    node.owner = name();
    node.after = unfinishedDependencies();
    node.after.insert(node.after.end(), recipeNodes_.begin(), recipeNodes_.end());
    if (recipeNodes_.empty()) {
        node.makes = build_->ownFiles();
    }
    node.seconds = 0;
    node.end = [self = shared_from_this()](NodeEnd end) { return self->completed(end); };
    completion_ = shared_.schedule.add(std::move(node));
    if (isList_) {
        sourceNodes_ = {completion_};  // such as a file that is written in the end
    }
}

void ScheduledBuild::addSources() {
    std::vector<NodeId> nodes = sourceNodes_;
    waitForSources(nodes);
    if (!nodes.empty()) {
        sources_ = nodes.size() == 1 ? nodes.front() : join(std::move(nodes));
    }
}

void ScheduledBuild::keepProgress() {
    if (build_ && std::exchange(news_, false)) {
        build_->cache().keepProgress();
    }
}

/// What was thrown while the target was being built.
void ScheduledBuild::takeFailure() {
    shared_.failed = true;
    try {
        rethrowWithNote(build_->subject().note);
    } catch (const VeskException& exception) {
        if (shared_.setting.options.keepGoing) {
            reportError(exception);
            tellFailed(shared_.setting, seenAs_, exception.report());
            return;
        }
        if (!shared_.error) {
            shared_.error = std::current_exception();
            events::emit(
                events::TargetFinished{seenAs_, events::Outcome::Failed, exception.report(), 0, 0});
        }
    } catch (...) {
        if (!shared_.error) {
            shared_.error = std::current_exception();
        }
    }
    shared_.schedule.stop();
}

Turn ScheduledBuild::ask(Batch& batch) {
    const console::PrefixScope scope(build_->prefix());
    try {
        std::ranges::copy_if(
            batch.recipes, std::back_inserter(batch.stale),
            [this](const std::size_t number) { return build_->cache().stale(number); });
        if (batch.stale.empty()) {
            return Turn::Nothing;
        }
        build_->cache().claim();
        batch.stage = build_->stageFor(batch.stale);
        for (std::size_t i = 0; i < batch.stale.size(); ++i) {
            console::normal("Starting build job");
        }
        shared_.setting.events->stepsBegan(name(), 1);
        return Turn::Run;
    } catch (...) {
        batch.stage.reset();
        takeFailure();
        return Turn::Failed;
    }
}

bool ScheduledBuild::ended(Batch& batch, NodeEnd end) {
    if (!batch.stage) {
        shared_.setting.events->dropped(1);
        return end == NodeEnd::Done;
    }
    const console::PrefixScope scope(build_->prefix());
    const auto stage = std::exchange(batch.stage, nullptr);
    stage->showTranscripts();
    shared_.setting.events->stepsEnded(name(), 1);
    for (std::size_t i = 0; i < batch.stale.size(); ++i) {
        const Job& job = *stage->jobs()[i];
        if (job.succeeded) {
            build_->cache().ran(batch.stale[i], job.seconds);
            news_ = true;
            ran_ = true;
        }
    }
    if (stage->reportFailures()) {
        ownFailure_ = true;
        shared_.failed = true;
        tellFailed(shared_.setting, seenAs_, stage->failureText());
        if (!shared_.setting.options.keepGoing) {
            shared_.schedule.stop();
        }
    }
    return end == NodeEnd::Done;
}

/// Of a target that has not been finished.
void ScheduledBuild::tellWhyNot() const {
    const auto needed = std::ranges::find_if(
        dependencies_, [](const auto& dependency) { return dependency->failed(); });
    if (needed != dependencies_.end()) {
        tellSkipped(shared_.setting, seenAs_, (*needed)->name());
    } else if (!ownFailure_) {
        build_->tellEnd(TargetEnd::NotBegun);
    }
}

bool ScheduledBuild::completed(NodeEnd end) {
    const console::PrefixScope scope(build_->prefix());
    try {
        CacheStep& cache = build_->cache();
        if (end == NodeEnd::Done && platform::interruptSignal() == 0) {
            if (!build_->stands()) {
                if (!cache.asked()) {
                    cache.ask();
                }
                stamp_ = (cache.mustBuild() ? build_->complete() : build_->stored()).stamp;
            }
            console::normal("Build done");
            succeeded_ = true;
            build_->tellEnd(ran_ ? TargetEnd::Ran : TargetEnd::UpToDate);
        } else {
            cache.keepProgress();
            tellWhyNot();
        }
    } catch (...) {
        takeFailure();
    }
    if (ownFailure_ && platform::interruptSignal() == 0) {
        console::error("Build of {} failed. Exiting..", build_->subject().targetName);
    }
    build_.reset();
    return succeeded_;
}

}  // namespace Vesk
