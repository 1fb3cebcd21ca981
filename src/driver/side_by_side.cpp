#include "driver/side_by_side.h"

#include <algorithm>
#include <limits>

#include "base/interruption.h"
#include "driver/build_errors.h"
#include "driver/target_wishes.h"
#include "platform/interrupt.h"

namespace Vesk {
namespace {

/// Visits pause when so much is waiting: their contexts are all in memory.
constexpr std::size_t kMostUnfinished = 20'000;

}  // namespace

SideBySide::SideBySide(const BuildSetting& setting)
    : shared_{setting,
              Schedule({workerCount(setting.options.jobCount, std::numeric_limits<unsigned>::max(),
                                    std::numeric_limits<unsigned>::max()),
                        [] { return platform::interruptSignal() == 0; }, [this] { keepProgress(); },
                        std::chrono::milliseconds(30'000),
                        [this](const std::chrono::milliseconds longest) {
                            return shared_.setting.events->beforeWaiting(longest);
                        }}),
              nullptr, false} {}

bool SideBySide::mayOverlap(const Builder& builder, const TargetContext& context) {
    switch (builder.overlap(context)) {
        case Overlap::Always:
            return true;
        case Overlap::WhenAsked:
            return saysYes(context, kSideBySideVariable);
        case Overlap::Never:
            break;
    }
    return false;
}

void SideBySide::throwFailure() {
    abandon();
    if (shared_.error) {
        std::rethrow_exception(shared_.error);
    }
    stopIfInterrupted();
    throw BuildFailed();
}

void SideBySide::waitForAll() {
    // What needs a failed node is skipped, so that nothing may be left when all is stopped.
    if (!shared_.schedule.waitForAll() || shared_.schedule.stopped()) {
        throwFailure();
    }
}

void SideBySide::waitFor(NodeId node) {
    if (!shared_.schedule.waitFor(node) || shared_.schedule.stopped()) {
        throwFailure();
    }
}

void SideBySide::waitForRecipes(const Builder& builder, const TargetContext& context,
                                const ScheduledBuild::Dependencies& dependencies) {
    if (shared_.schedule.idle()) {
        return;
    }
    if (!mayOverlap(builder, context)) {
        waitForAll();
        return;
    }
    const LookedFor wanted = builder.lookedFor(context);
    for (const auto& dependency : dependencies) {
        if (wanted.patterns && dependency->sources()) {
            waitFor(*dependency->sources());
        }
    }
    for (const std::string& file : wanted.files) {
        if (const auto maker = shared_.schedule.makerOf(file)) {
            waitFor(*maker);
        }
    }
}

void SideBySide::waitForStamp(const ScheduledBuild& dependency) {
    if (!dependency.stampKnown()) {
        waitFor(dependency.completion());
    }
    if (dependency.failed()) {
        if (shared_.schedule.stopped()) {
            throwFailure();
        }
        throw BuildFailed();
    }
}

bool SideBySide::isOpen(const ScheduledBuild& dependency) const {
    return !dependency.stampKnown() ||
           (dependency.sources() && !shared_.schedule.finished(*dependency.sources()));
}

void SideBySide::waitUnlessOverlapping(bool overlaps) {
    if (!overlaps && !shared_.schedule.idle()) {
        waitForAll();
    }
}

/// A second visit must not wait for the claim of the first one, which waits for this thread.
void SideBySide::waitForRecord(const BuildSubject& subject) {
    const auto found = builds_.find({&subject.cache, subject.cacheKey});
    const auto build = found == builds_.end() ? nullptr : found->second.lock();
    if (build && !build->finished()) {
        waitFor(build->completion());
    }
}

/// Whether files that decide about the target may still change.
bool SideBySide::waitsForOthers(TargetBuild& build,
                                const ScheduledBuild::Dependencies& dependencies) const {
    if (std::ranges::any_of(dependencies, [](const auto& each) { return !each->finished(); })) {
        return true;
    }
    const auto isToBeMade = [this](const std::string& file) { return this->isToBeMade(file); };
    for (const CacheRequest::Part& part : build.cache().request().parts) {
        if (std::ranges::any_of(part.reads, isToBeMade) ||
            std::ranges::any_of(part.writes, isToBeMade)) {
            return true;
        }
    }
    for (std::size_t i = 0; i < build.recipes().size(); ++i) {
        if (build.cache().anyRead(i, isToBeMade)) {
            return true;
        }
    }
    return false;
}

TargetResult SideBySide::build(std::unique_ptr<TargetBuild> build,
                               ScheduledBuild::Dependencies dependencies) {
    if (build->stands()) {
        return std::make_shared<ScheduledBuild>(shared_, std::move(build), std::move(dependencies))
            ->begin();
    }
    const BuildSubject& subject = build->subject();
    const bool ownEnvironment =
        std::ranges::any_of(build->recipes(),
                            [](const Recipe& r) { return r.action != nullptr; }) &&
        !build->variables().empty();
    if (!subject.overlaps || ownEnvironment) {
        waitForAll();  // the variables of actions are those of the process
        return build->buildNow();
    }
    if (!shared_.schedule.idle()) {
        waitForRecord(subject);
    }
    std::erase_if(dependencies, [](const auto& each) { return each->finished(); });
    CacheStep& cache = build->cache();
    bool waits = build->isKept();  // what is kept stands, but for some file
    if (waits) {
        cache.askLater();
    } else if (!shared_.schedule.idle()) {
        cache.askLater();
        waits = waitsForOthers(*build, dependencies);
    }
    if (!waits) {
        cache.ask();
        if (!cache.mustBuild() || build->recipes().empty()) {
            return build->buildNow();
        }
    }
    auto& place = builds_[{&subject.cache, subject.cacheKey}];
    const auto scheduled =
        std::make_shared<ScheduledBuild>(shared_, std::move(build), std::move(dependencies));
    place = scheduled;
    return scheduled->begin();
}

void SideBySide::advance() {
    if (shared_.schedule.idle()) {
        return;
    }
    shared_.schedule.advance();
    while (shared_.schedule.unfinished() > kMostUnfinished && !shared_.schedule.stopped()) {
        shared_.schedule.waitForOne();
    }
    if (shared_.schedule.stopped()) {
        throwFailure();
    }
}

void SideBySide::finish() {
    waitForAll();
    stopIfInterrupted();
}

void SideBySide::abandon() {
    shared_.schedule.abandon();
}

void SideBySide::keepProgress() {
    for (auto& [key, build] : builds_) {
        if (const auto begun = build.lock()) {
            begun->keepProgress();
        }
    }
}

}  // namespace Vesk
