#include "driver/target_visit.h"

#include <algorithm>

#include "base/console.h"
#include "base/interruption.h"
#include "base/text.h"
#include "driver/build_errors.h"
#include "driver/mistyped_names.h"
#include "driver/target_news.h"
#include "driver/target_wishes.h"
#include "keep/encoding.h"
#include "types/context/context_value.h"
#include "types/values/errors.h"
#include "types/values/identifier_path.h"

namespace Vesk {
namespace {

/// Takes the last index or, where there is none, the last segment off a path; false when nothing
/// is left.
bool shorten(IdentifierPath& path) {
    std::vector<PathIndex>& keys = path.segments.back().keys;
    if (!keys.empty()) {
        keys.pop_back();
    } else {
        path.segments.pop_back();
    }
    return !path.segments.empty();
}

void printContext(const char* title, const Context& context) {
    if (console::enabled(console::level::kDetail)) {
        console::write(console::level::kDetail, console::colour::kNormal, title);
        context.print(console::level::kDetail);
    }
}

}  // namespace

TargetVisit::TargetVisit(const BuildSetting& setting, TargetLocation location,
                         std::vector<ValuePtr> arguments, std::string key)
    : setting_(setting),
      location_(std::move(location)),
      arguments_(std::move(arguments)),
      key_(std::move(key)),
      seenAs_{events::newId(), setting.catalog.nameOf(location_)},
      memory_(std::make_shared<VisitMemory>(setting.keeper, location_, displayName(), arguments_)) {
    tellEntered();
}

void TargetVisit::tellEntered() const {
    if (seenAs_.visit == 0) {
        return;
    }
    std::string given;
    for (const ValuePtr& argument : arguments_) {
        given += (given.empty() ? "" : ", ") + argument->toDisplayString();
    }
    events::emit(events::VisitStarted{
        seenAs_, location_.project->name, location_.unit->name, location_.project->profile,
        setting_.options.hidden.covered(std::move(given)), location_.target->place()});
}

void TargetVisit::left() const {
    if (seenAs_.visit != 0) {
        const KeptVisit* const kept = memory_->taken();
        events::emit(events::VisitFinished{seenAs_.visit,
                                           kept != nullptr           ? std::string(kept->tool)
                                           : choice_.tool != nullptr ? choice_.tool->name().str()
                                                                     : std::string(),
                                           kept != nullptr});
    }
}

/// What it would have cost to run what it has kept stands in the record.
void TargetVisit::tellKept(const KeptVisit& kept) const {
    if (seenAs_.visit == 0) {
        return;
    }
    KeptSteps steps;
    const auto record = setting_.cacheOf(*location_.project).last(std::string(kept.recordKey));
    if (record && kept.hasRecipes) {
        steps = stepsIn(*record);
    }
    events::emit(
        events::TargetFinished{seenAs_,
                               kept.hasRecipes ? events::Outcome::Fresh : events::Outcome::Group,
                               {},
                               steps.steps,
                               steps.seconds});
}

void TargetVisit::announce() const {
    console::setPrefix(prefix());
}

std::string TargetVisit::note() const {
    return "in target " + displayName() + " (" + location_.target->place() + ")";
}

std::string TargetVisit::neededByNote() const {
    return "needed by target " + displayName() + " (" + location_.target->place() + ")";
}

std::vector<Assignment> TargetVisit::boundParameters() const {
    const std::vector<std::string>& names = location_.target->parameters;
    if (names.size() != arguments_.size()) {
        std::string list = names.empty() ? "" : " (" + joined(names, ", ") + ")";
        throw VeskException("Target '" + displayName() + "' takes " +
                            counted(names.size(), "parameter") + list + ", but gets " +
                            counted(arguments_.size(), "argument") + ".");
    }
    std::vector<Assignment> parameters;
    for (std::size_t i = 0; i < names.size(); ++i) {
        parameters.push_back(resolvedAssignment(names[i], arguments_[i]));
    }
    return parameters;
}

ContextLayers TargetVisit::layers() const {
    return {choice_.tool != nullptr ? &choice_.tool->declaredSettings() : nullptr,
            setting_.catalog.implicitLayers(*location_.project), boundParameters()};
}

void TargetVisit::claimVariables() {
    console::trace("Filtering context.");
    if (!console::enabled(console::level::kSubject) ||
        choice_.builder->match(input_->context()).note != MatchNote::BuildPossible) {
        return;
    }
    for (const auto& [name, assignment] : input_->context().assignments()) {
        if (choice_.builder->subjects().contains(name)) {
            console::trace("Claiming variable '{}'.", name);
        }
    }
}

void TargetVisit::begin() {
    stopIfInterrupted();
    announce();
    console::normal("Visiting target");
    memory_->begin();
    if (const KeptVisit* kept = memory_->taken()) {
        setting_.events->expected(kept->dependencies.size());
    } else {
        evaluate();
    }
}

VisitMemory::Watch TargetVisit::watch(VisitMemory::Part part) {
    using Shown = console::MessageCopy::Shown;
    return {*memory_, part, next_ < repeated_ ? Shown::no : Shown::yes};
}

void TargetVisit::evaluate() {
    memory_->forgetMade();
    const auto watched = watch(VisitMemory::Part::first);
    try {
        const auto trial = InputContext::forToolChoice(location_.target, displayName(), layers());
        choice_ = chooseTool(*trial, displayName(), setting_.staticTools,
                             setting_.declaredTools(*location_.project));
        input_.emplace(location_.target, displayName(), layers());
        outputs_.emplace(*input_);
        input_->assemble();
        reportToolChoice(choice_);
        claimVariables();
        warnOfMistypedNames(*location_.target, input_->context(), choice_);
        input_->evaluateConditions();
        dependencies_ = createDependencyList(input_->context());
        setting_.events->expected(dependencies_.size());
    } catch (...) {
        rethrowWithNote(note());
    }
}

/// What the kept visit has said is said; it goes on where it was, after the outputs up to there
/// have been put into the context that now is made. `visited`: so many of the dependencies have
/// been.
void TargetVisit::evaluateAfterAll(std::size_t visited) {
    setting_.events->dropped(memory_->taken()->dependencies.size() - visited);
    memory_->leave();
    announce();
    repeated_ = next_ + 1;
    next_ = 0;
    stamps_.clear();
    scheduled_.clear();
    evaluate();
    --repeated_;
}

bool TargetVisit::hasNext() const {
    const KeptVisit* kept = memory_->taken();
    return next_ < (kept != nullptr ? kept->dependencies.size() : dependencies_.size());
}

/// Nothing when the visit does not go as the kept one did.
std::optional<TargetVisit::Next> TargetVisit::nextAsKept() {
    const KeptDependency& dependency = memory_->taken()->dependencies[next_];
    auto arguments = decodedValues(dependency.arguments);
    if (!arguments) {
        return std::nullopt;
    }
    try {
        return Next{
            setting_.catalog.locate(dependency.reference, *location_.project, *location_.unit),
            std::move(*arguments)};
    } catch (const NotFoundException&) {
        return std::nullopt;
    }
}

TargetVisit::Next TargetVisit::next() {
    if (memory_->taken() != nullptr) {
        if (auto next = nextAsKept()) {
            return std::move(*next);
        }
        evaluateAfterAll(next_);
    }
    Next next{locateNext(), {}};
    const auto watched = watch(VisitMemory::Part::arguments);
    next.arguments = argumentsForNext();
    memory_->depends(dependencies_[next_].reference, next.arguments);
    return next;
}

TargetLocation TargetVisit::locateNext() const {
    try {
        return setting_.catalog.locate(dependencies_[next_].reference, *location_.project,
                                       *location_.unit);
    } catch (...) {
        rethrowWithNote(dependencies_[next_].place, neededByNote());
    }
}

/// The context in which a macro's list is found: the innermost one on its path, else this target's
/// own.
ValuePtr TargetVisit::sourceOf(const IdentifierPath& macro) {
    for (IdentifierPath path = macro; shorten(path);) {
        const ValuePtr value = input_->context().resolveIdentifier(path);
        if (valueAs<VeskContext>(value.get()) != nullptr) {
            return value->deepCopy();
        }
    }
    return VeskContext::referringTo(input_->shared());
}

std::vector<ValuePtr> TargetVisit::argumentsForNext() {
    const DependencyRecord& record = dependencies_[next_];
    std::vector<ValuePtr> arguments;
    try {
        if (record.sourceParameter) {
            arguments.push_back(sourceOf(record.macro));
        }
        for (const IdentifierPath& parameter : record.parameters) {
            arguments.push_back(input_->context().resolveIdentifier(parameter)->deepCopy());
        }
    } catch (...) {
        rethrowWithNote(record.place,
                        "passed to '" + record.reference.toDisplayString() + "' " + note());
    }
    return arguments;
}

/// Whether the visit still goes as the kept one did.
bool TargetVisit::takeKeptOutputs(const TargetResult& result) {
    if (!memory_->sameOutputs(next_, result)) {
        return false;
    }
    console::repeat(memory_->taken()->dependencies[next_++].said);
    scheduled_.push_back(result.scheduled);
    return true;
}

void TargetVisit::addOutputs(const TargetLocation& dependency, const TargetResult& result) {
    if (memory_->taken() != nullptr) {
        if (!takeKeptOutputs(result)) {
            evaluateAfterAll(next_ + 1);
        }
        return;
    }
    if (memory_->holds() && !memory_->sameOutputs(next_, result)) {
        memory_->leave();
    }
    memory_->gets(result);
    const auto watched = watch(VisitMemory::Part::outputs);
    const DependencyRecord& record = dependencies_[next_++];
    stamps_.push_back({dependency.unit->name + "::" + dependency.target->name, result.stamp});
    scheduled_.push_back(result.scheduled);
    try {
        outputs_->add({record, dependency.unit->name, dependency.target->name,
                       dependency.unit == location_.unit, result.outputs.context()});
    } catch (...) {
        rethrowWithNote(note());
    }
}

void TargetVisit::passOver() {
    console::repeat(memory_->taken()->dependencies[next_++].said);
    scheduled_.push_back(nullptr);
}

std::optional<StandingVisits::Node> TargetVisit::standsAs() const {
    return memory_->taken() != nullptr ? standsAs_ : std::nullopt;
}

void TargetVisit::standAs(StandingVisits::Node visit) {
    if (memory_->takesThat(setting_.standing->tree().visits()[visit].kept)) {
        standsAs_ = visit;
    }
}

std::optional<TargetResult> TargetVisit::resultAs(StandingVisits::Node visit) const {
    return memory_->resultOf(setting_.standing->tree().visits()[visit].kept);
}

void TargetVisit::skipDependency() {
    ++next_;
    failedDependency_ = true;
}

bool TargetVisit::alwaysRuns() const {
    return saysYes(*input_->shared(), kAlwaysVariable);
}

/// Those that are built with others may have failed since.
bool TargetVisit::hasFailedDependency() const noexcept {
    return failedDependency_ || std::ranges::any_of(scheduled_, [](const auto& dependency) {
               return dependency && dependency->failed();
           });
}

/// Whether dependencies that are being built may give something else in the end. Of a visit that
/// makes nothing only what they say of themselves matters; of one that is to be checked,
/// everything.
bool TargetVisit::waitsForMore(const SideBySide* others) const {
    const KeptVisit* const kept = memory_->taken();
    return std::ranges::any_of(scheduled_, [others, kept](const auto& build) {
        return build && !build->finished() &&
               (others == nullptr || kept == nullptr || !build->stampKnown() ||
                (kept->hasRecipes && others->isOpen(*build)));
    });
}

bool TargetVisit::endsAsKept(SideBySide* others) {
    const events::Span span(events::Activity::Cache, "compare the kept visit");
    if (waitsForMore(others)) {
        return false;
    }
    if (others != nullptr) {
        others->waitUnlessOverlapping(memory_->overlaps());
    }
    const auto isToBeMade = [others](const std::string& file) {
        return others != nullptr && others->isToBeMade(file);
    };
    if (standsAs() && setting_.standing->asksTheSame(*standsAs_, isToBeMade)) {
        memory_->stands();
        setting_.tree->asksAs(inTree_, *standsAs_);
        return true;
    }
    ProjectCache::StandingQuestion question{isToBeMade};
    if (standsAs() && setting_.standing->knowsFilesOf(*standsAs_)) {
        question.mayDiffer = [standing = setting_.standing](const std::string& file) {
            return standing->mayDiffer(file);
        };
    }
    return memory_->ends(setting_.cacheOf(*location_.project), question);
}

bool TargetVisit::isSettled(SideBySide* others) {
    if (!memory_->holds()) {
        return true;
    }
    const bool taken = memory_->taken() != nullptr;
    if (endsAsKept(others) || (taken && takesRecipes(others))) {
        return true;
    }
    if (taken) {
        evaluateAfterAll(next_);
    }
    memory_->leave();
    return !taken;
}

/// Whether the visit would make the same recipes again. Those of them that are stale run without
/// it, some perhaps when dependencies have been built.
bool TargetVisit::takesRecipes(const SideBySide* others) {
    if (!waitsForMore(others)) {
        recipes_ = memory_->recipes(setting_.cacheOf(*location_.project));
    }
    return recipes_.has_value();
}

/// For visits that might be passed over while it runs, or after that. What runs alongside others
/// changes nothing but what it says.
void TargetVisit::tellWhatRuns(const TargetBuild& build, bool alongside) const {
    if (setting_.standing == nullptr || build.recipes().empty()) {
        return;
    }
    for (const CacheRequest::Part& part : build.cache().request().parts) {
        for (const auto* files : {&part.writes, &part.byProducts}) {
            for (const std::string& file : *files) {
                setting_.standing->isMade(file);
            }
        }
        alongside = alongside && part.outputDirectory.empty();
    }
    if (!alongside) {
        setting_.standing->anythingChanges();
    }
}

/// Of a visit that is not made.
BuildSubject TargetVisit::keptSubject() const {
    const KeptVisit& kept = *memory_->taken();
    BuildSubject subject{seenAs_,
                         location_.target->name,
                         note(),
                         std::string(kept.tool),
                         nullptr,
                         nullptr,
                         {},
                         setting_.cacheOf(*location_.project),
                         std::string(kept.recordKey),
                         kept.overlaps};
    subject.hidden = setting_.options.hidden;
    return subject;
}

TargetResult TargetVisit::buildAsKept(SideBySide* others) {
    const KeptVisit& kept = *memory_->taken();
    console::repeat(kept.saidLast);
    BuildSubject subject = keptSubject();
    subject.ended = [memory = memory_, &cache = subject.cache](const TargetBuild&,
                                                               const TargetResult&,
                                                               bool) { memory->builtAgain(cache); };
    auto build = std::make_unique<TargetBuild>(
        setting_, std::move(subject), std::move(*recipes_),
        TargetResult{VisitOutputs::fromKept(kept.outputs), std::string(kept.stamp), nullptr});
    std::erase(scheduled_, nullptr);
    tellWhatRuns(*build, others != nullptr && kept.overlaps);
    return others != nullptr ? others->build(std::move(build), std::move(scheduled_))
                             : build->buildNow();
}

BuildSubject TargetVisit::subject() const {
    const auto ended = [memory = memory_, overlaps = overlaps_](
                           const TargetBuild& build, const TargetResult& result, bool hit) {
        memory->made(build, overlaps, result, hit);
    };
    return {seenAs_,
            location_.target->name,
            note(),
            choice_.tool->name().str(),
            choice_.builder,
            input_->shared(),
            stamps_,
            setting_.cacheOf(*location_.project),
            cacheKey(),
            overlaps_,
            alwaysRuns() ? Runs::Always : Runs::AsNeeded,
            setting_.options.hidden,
            setting_.keeper != nullptr && !alwaysRuns()
                ? ended
                : std::function<void(const TargetBuild&, const TargetResult&, bool)>()};
}

std::unique_ptr<TargetBuild> TargetVisit::targetBuild() {
    const auto watched = watch(VisitMemory::Part::last);
    return std::make_unique<TargetBuild>(setting_, subject());
}

void TargetVisit::waitForStamp(SideBySide& others, const ScheduledBuild& dependency) const {
    try {
        others.waitForStamp(dependency);
    } catch (const BuildFailed&) {
        if (dependency.failed()) {
            tellSkipped(setting_, seenAs_, dependency.name());
        }
        throw;
    }
}

/// What dependants see of dependencies that are still being built.
void TargetVisit::takeStamps(SideBySide& others) {
    for (std::size_t i = 0; i < scheduled_.size(); ++i) {
        if (scheduled_[i]) {
            waitForStamp(others, *scheduled_[i]);
            stamps_[i].stamp = scheduled_[i]->stamp();
        }
    }
    std::erase(scheduled_, nullptr);
}

TargetResult TargetVisit::build(SideBySide* others) {
    overlaps_ = SideBySide::mayOverlap(*choice_.builder, input_->context());
    if (others != nullptr) {
        takeStamps(*others);
        others->waitForRecipes(*choice_.builder, input_->context(), scheduled_);
    }
    std::unique_ptr<TargetBuild> build = targetBuild();
    tellWhatRuns(*build, others != nullptr && overlaps_);
    return others != nullptr ? others->build(std::move(build), std::move(scheduled_))
                             : build->buildNow();
}

void TargetVisit::resolve() {
    input_->addWaiting();
    input_->context().resolveVariables();
}

std::unique_ptr<TargetBuild> TargetVisit::prepareBuild(Runs runs) {
    try {
        resolve();
        printContext("Input context:", input_->context());
        for (std::size_t i = 0; i < scheduled_.size(); ++i) {
            stamps_[i].stamp = scheduled_[i] ? scheduled_[i]->stamp() : stamps_[i].stamp;
        }
        BuildSubject all = subject();
        all.runs = all.runs == Runs::Always ? all.runs : runs;
        return std::make_unique<TargetBuild>(setting_, std::move(all));
    } catch (const Interrupted&) {
        throw;
    } catch (...) {
        rethrowWithNote(note());
    }
}

TargetResult TargetVisit::finish(SideBySide* others) {
    announce();
    if (memory_->taken() != nullptr && !recipes_) {
        return keptResult(others);
    }
    TargetResult result;
    try {
        if (!recipes_) {
            const auto watched = watch(VisitMemory::Part::last);
            resolve();
        }
        if (recipes_) {
            result = buildAsKept(others);
        } else {
            printContext("Input context:", input_->context());
            result = build(others);
        }
    } catch (const BuildFailed&) {
        throw;  // the messages before it have said everything
    } catch (const Interrupted&) {
        throw;
    } catch (...) {
        rethrowWithNote(note());
    }
    if (!recipes_) {
        printContext("Output context:", *result.outputs.context());
    }
    if (!result.scheduled) {
        console::normal("Build done");
    }
    return result;
}

TargetResult TargetVisit::keptResult(SideBySide* others) {
    const KeptVisit& kept = *memory_->taken();
    console::repeat(kept.saidLast);
    TargetResult result{VisitOutputs::fromKept(kept.outputs), std::string(kept.stamp), nullptr};
    std::erase_if(scheduled_, [](const auto& build) { return !build || build->finished(); });
    if (!scheduled_.empty()) {
        return others->build(std::make_unique<TargetBuild>(setting_, keptSubject(), kept.hasRecipes,
                                                           std::move(result)),
                             std::move(scheduled_));
    }
    if (kept.hasRecipes) {
        setting_.events->ended(displayName(), TargetEnd::UpToDate);
    }
    tellKept(kept);
    console::normal("Build done");
    return result;
}

/// One cache belongs to one project: unit, target, arguments and profile tell its records apart.
std::string TargetVisit::cacheKey() const {
    std::string key = location_.unit->name + "::" + location_.target->name;
    for (const ValuePtr& argument : arguments_) {
        key += "(" + setting_.options.hidden.masked(argument->toDisplayString()) + ")";
    }
    return location_.project->profile.empty() ? key : key + " " + location_.project->profile;
}

}  // namespace Vesk
