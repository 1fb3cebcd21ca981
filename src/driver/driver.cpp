#include "driver/driver.h"

#include <fmt/format.h>

#include "base/console.h"
#include "base/interruption.h"
#include "base/report.h"
#include "base/text.h"
#include "driver/build_errors.h"
#include "driver/target_news.h"
#include "driver/target_visit.h"
#include "types/context/context_value.h"

namespace Vesk {
namespace {

/// Takes the target's name off the messages when the build ends, whichever way.
struct PrefixEnd {
    PrefixEnd() = default;
    PrefixEnd(const PrefixEnd&) = delete;
    PrefixEnd& operator=(const PrefixEnd&) = delete;
    ~PrefixEnd() { console::setPrefix({}); }
};

std::string argumentText(const ValuePtr& argument) {
    const auto* context = valueAs<VeskContext>(argument.get());
    if (context != nullptr && !context->owns()) {
        // The dependant's own context, which is not resolved yet: its identity tells it.
        return fmt::format("{}", static_cast<const void*>(context->context().get()));
    }
    return argument->toDisplayString();
}

std::vector<std::shared_ptr<Context>> referredContexts(const std::vector<ValuePtr>& arguments) {
    std::vector<std::shared_ptr<Context>> contexts;
    for (const ValuePtr& argument : arguments) {
        const auto* context = valueAs<VeskContext>(argument.get());
        if (context != nullptr && !context->owns()) {
            contexts.push_back(context->context());
        }
    }
    return contexts;
}

std::string visitKey(const TargetLocation& location, const std::vector<ValuePtr>& arguments) {
    std::string key = fmt::format("{}", static_cast<const void*>(location.target.get()));
    for (const ValuePtr& argument : arguments) {
        key += "(" + argumentText(argument) + ")";
    }
    return key;
}

void tellNeeded(events::Id by, events::Id visit) {
    if (by != 0 && visit != 0) {
        events::emit(events::Needed{by, visit});
    }
}

}  // namespace

Driver::Driver(BuildSetting setting) : setting_(std::move(setting)) {}

Driver::~Driver() = default;

void Driver::throwCycle(const std::string& key) const {
    std::vector<std::string> chain;
    for (const auto& visit : stack_) {
        if (!chain.empty() || visit->key() == key) {
            chain.push_back(visit->displayName());
        }
    }
    chain.push_back(chain.front());
    throw LoopFoundException(chain.front(), chain);
}

void Driver::throwEndless(const Target& target) const {
    std::vector<std::string> way;
    for (auto visit = stack_.rbegin(); visit != stack_.rend(); ++visit) {
        way.insert(way.begin(), (*visit)->displayName());
        if ((*visit)->location().target.get() == &target) {
            break;
        }
    }
    way.push_back(way.front());
    EndlessVisits error(
        fmt::format("Target '{}' is needed by itself, each time with other arguments; {} visits "
                    "deep that ends here.",
                    way.front(), kMaxVisitsOnWay));
    error.addNote("the way from one visit to the next: " + joined(way, " -> "));
    throw error;
}

/// `expected`: the visit that it was in an earlier run, if that can be told.
Driver::Visited& Driver::enter(const TargetLocation& location, std::vector<ValuePtr> arguments,
                               std::optional<StandingVisits::Node> expected) {
    const std::string key = visitKey(location, arguments);
    if (const auto known = visited_.find(key); known != visited_.end()) {
        if (!known->second.finished) {
            throwCycle(key);
        }
        tellNeeded(stack_.empty() ? 0 : stack_.back()->seenAs().visit, known->second.visit);
        return known->second;
    }
    if (visitsOnWay_[location.target.get()] == kMaxVisitsOnWay) {
        throwEndless(*location.target);
    }
    Visited& visited = visited_[key];
    visited.arguments = referredContexts(arguments);
    const events::Id dependant = stack_.empty() ? 0 : stack_.back()->seenAs().visit;
    push(location, std::move(arguments), key);
    const auto earlier = topInEarlierRun(expected);
    if (passOverTop(visited, earlier)) {
        return visited;
    }
    visited.visit = stack_.back()->seenAs().visit;
    tellNeeded(dependant, visited.visit);
    addToTree(visited);
    stack_.back()->begin();
    if (earlier) {
        setting_.standing->visit(*earlier);
        stack_.back()->standAs(*earlier);
    }
    return visited;
}

void Driver::addToTree(Visited& visited) {
    if (setting_.tree != nullptr) {
        TargetVisit& visit = *stack_.back();
        visited.inTree = setting_.tree->add(visit.displayName(), visit.prefix(), visit.keptAs(),
                                            setting_.cacheOf(*visit.location().project));
        visit.setInTree(visited.inTree);
    }
}

/// The next dependency of a visit that goes as it went in an earlier run.
std::optional<StandingVisits::Node> Driver::nextInEarlierRun(const TargetVisit& visit) const {
    const auto dependant = setting_.standing != nullptr ? visit.standsAs() : std::nullopt;
    return dependant ? std::optional(
                           setting_.standing->tree().dependencies(*dependant)[visit.nextNumber()])
                     : std::nullopt;
}

std::optional<StandingVisits::Node> Driver::topInEarlierRun(
    std::optional<StandingVisits::Node> expected) const {
    const auto key = stack_.back()->keptAs();
    if (setting_.standing == nullptr || !key) {
        return std::nullopt;
    }
    return expected && setting_.standing->tree().visits()[*expected].key == *key
               ? expected
               : setting_.standing->find(*key);
}

/// Whether the visit has been passed over, or is now.
bool Driver::isPassed(StandingVisits::Node visit) {
    StandingVisits& standing = *setting_.standing;
    if (standing.isPassed(visit)) {
        return true;
    }
    if (!standing.mayPass(visit)) {
        return false;
    }
    if (others_) {
        others_->waitUnlessOverlapping(standing.overlaps(visit));
    }
    const auto isToBeMade = [this](const std::string& file) {
        return others_ && others_->isToBeMade(file);
    };
    if (!standing.stillStands(visit, isToBeMade)) {
        return false;
    }
    console::repeat(standing.pass(visit));
    return true;
}

bool Driver::passOverNext(TargetVisit& visit) {
    const auto next = nextInEarlierRun(visit);
    if (!next || !isPassed(*next)) {
        return false;
    }
    setting_.tree->depends(visit.inTree(), visit.nextNumber(), setting_.tree->addPassed(*next));
    setting_.events->dropped(1);
    visit.passOver();
    return true;
}

/// For a dependant that is visited itself, and wants the outputs.
bool Driver::passOverTop(Visited& visited, std::optional<StandingVisits::Node> earlier) {
    const StandingVisits* const standing = setting_.standing;
    if (!earlier || !(standing->isPassed(*earlier) || standing->mayPass(*earlier))) {
        return false;
    }
    auto result = stack_.back()->resultAs(*earlier);
    if (!result || !isPassed(*earlier)) {
        return false;
    }
    visited.result = std::move(*result);
    visited.finished = true;
    visited.inTree = setting_.tree->addPassed(*earlier);
    pop();
    return true;
}

/// For those who sum up a build that has failed.
void Driver::tellPassed() const {
    if (setting_.standing != nullptr) {
        for (const std::string& target : setting_.standing->targetsPassed()) {
            setting_.events->ended(target, TargetEnd::UpToDate);
        }
    }
}

void Driver::push(const TargetLocation& location, std::vector<ValuePtr> arguments,
                  std::string key) {
    stack_.push_back(
        std::make_unique<TargetVisit>(setting_, location, std::move(arguments), std::move(key)));
    ++visitsOnWay_[location.target.get()];
}

void Driver::pop() {
    const auto visits = visitsOnWay_.find(stack_.back()->location().target.get());
    if (--visits->second == 0) {
        visitsOnWay_.erase(visits);
    }
    stack_.back()->left();
    stack_.pop_back();
}

void Driver::visitNextDependency(TargetVisit& visit) {
    if (passOverNext(visit)) {
        return;
    }
    const auto expected = nextInEarlierRun(visit);
    auto [location, arguments] = visit.next();
    const std::size_t number = visit.nextNumber();
    try {
        const Visited& visited = enter(location, std::move(arguments), expected);
        if (setting_.tree != nullptr) {
            setting_.tree->depends(visit.inTree(), number, visited.inTree);
        }
        if (visited.hasFailed()) {
            visit.skipDependency();
            setting_.events->dropped(1);
            tellSkipped(setting_, visit.seenAs(), setting_.catalog.nameOf(location));
        } else if (visited.finished) {
            setting_.events->dropped(1);
            visit.addOutputs(location, visited.result);
        }  // else it is on top of the stack now, and hands its outputs over when it is finished
    } catch (...) {
        rethrowWithNote(visit.neededByNote());
    }
}

void Driver::finishTop() {
    TargetVisit& visit = *stack_.back();
    setting_.events->dropped(1);  // what it stood for are its own steps from now on
    if (visit.hasFailedDependency()) {
        throw BuildFailed();
    }
    Visited& visited = visited_.at(visit.key());
    visited.result = visit.finish(others_.get());
    visited.finished = true;
    const TargetLocation location = visit.location();
    pop();
    if (!stack_.empty()) {
        stack_.back()->announce();
        stack_.back()->addOutputs(location, visited.result);
    }
}

/// After a failure that has been reported: the target is left unbuilt, its dependants will be too.
void Driver::failTop() {
    Visited& visited = visited_.at(stack_.back()->key());
    visited.finished = true;
    visited.failed = true;
    const std::string name = stack_.back()->displayName();
    pop();
    if (!stack_.empty()) {
        stack_.back()->announce();
        stack_.back()->skipDependency();
        tellSkipped(setting_, stack_.back()->seenAs(), name);
    }
}

/// Of the top target. A toolchain that many lack is reported once.
void Driver::reportFailure(const VeskException& error) {
    const events::Subject& subject = stack_.back()->seenAs();
    if (const auto* const lacking = dynamic_cast<const NoToolchain*>(&error)) {
        const auto [first, isFirst] = firstWithout_.emplace(lacking->cause(), subject.target);
        if (!isFirst) {
            tellFailedLike(setting_, first->second, subject, error.report());
            return;
        }
    }
    reportError(error);
    tellFailed(setting_, subject, error.report());
}

void Driver::step(TargetVisit& visit) {
    if (visit.hasNext()) {
        visitNextDependency(visit);
    } else if (visit.hasFailedDependency() || visit.isSettled(others_.get())) {
        finishTop();
    }  // else it goes through its dependencies once more
}

template <class Action>
void Driver::guarded(Action action) {
    try {
        action();
    } catch (const Interrupted&) {
        throw;
    } catch (const LoopFoundException&) {
        throw;
    } catch (const EndlessVisits&) {
        throw;
    } catch (const BuildFailed&) {
        if (!setting_.options.keepGoing) {
            throw;
        }
        failTop();
    } catch (const VeskException& exception) {
        if (!setting_.options.keepGoing) {
            if (!others_ || !others_->hasFailed()) {
                events::emit(events::TargetFinished{
                    stack_.back()->seenAs(), events::Outcome::Failed, exception.report(), 0, 0});
            }
            throw;
        }
        reportFailure(exception);
        failTop();
    }
    if (others_) {
        others_->advance();
    }
}

void Driver::visitAll() {
    while (!stack_.empty()) {
        guarded([this] { step(*stack_.back()); });
    }
}

void Driver::beginBuild() {
    stack_.clear();
    visitsOnWay_.clear();
    firstWithout_.clear();
    const DriverOptions& options = setting_.options;
    if (options.jobCount != 0 && options.jobCount != 1 && !options.dryRun) {
        others_ = std::make_unique<SideBySide>(setting_);
    }
}

template <class Action>
void Driver::orAbandon(Action action) {
    try {
        action();
        if (others_) {
            others_->finish();
        }
    } catch (...) {
        if (others_) {
            others_->abandon();
        }
        throw;
    }
}

std::unique_ptr<TargetVisit> Driver::visitOnly(const TargetLocation& location) {
    // A key of its own: what a dependant needs of the target is another visit.
    const std::string key = visitKey(location, {}) + " only";
    visited_[key];
    push(location, {}, key);
    guarded([this] { stack_.back()->begin(); });
    const auto isReady = [this] { return stack_.size() == 1 && !stack_.back()->hasNext(); };
    while (!stack_.empty() && !isReady()) {
        guarded([this] { step(*stack_.back()); });
    }
    if (stack_.empty()) {
        return nullptr;
    }
    std::unique_ptr<TargetVisit> visit = std::move(stack_.back());
    stack_.clear();
    visitsOnWay_.clear();
    visit->left();
    return visit;
}

std::vector<std::unique_ptr<TargetVisit>> Driver::visitOnly(
    const std::vector<TargetLocation>& locations) {
    const PrefixEnd prefixEnd;
    beginBuild();
    std::vector<std::unique_ptr<TargetVisit>> visits;
    orAbandon([&] {
        for (const TargetLocation& location : locations) {
            visits.push_back(visitOnly(location));
        }
    });
    for (auto& visit : visits) {
        if (visit && visit->hasFailedDependency()) {
            visit.reset();
        }
    }
    return visits;
}

VisitOutputs Driver::build(const TargetLocation& location) {
    const PrefixEnd prefixEnd;
    beginBuild();
    const std::string root = visitKey(location, {});
    setting_.events->expected(1);
    try {
        orAbandon([&] {
            enter(location, {}, StandingVisits::Node{0});
            visitAll();
        });
        if (visited_.at(root).hasFailed()) {
            throw BuildFailed();
        }
    } catch (...) {
        tellPassed();
        throw;
    }
    return visited_.at(root).result.outputs;
}

}  // namespace Vesk
