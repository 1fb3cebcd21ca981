#include "driver/target_build.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <random>
#include <unordered_set>

#include "base/console.h"
#include "base/interruption.h"
#include "cache/record_files.h"
#include "driver/build_errors.h"
#include "driver/mentioned_files.h"
#include "driver/target_environment.h"
#include "driver/target_news.h"
#include "driver/value_paths.h"
#include "events/events.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "types/context/context_value.h"

namespace Vesk {
namespace {

/// What is known only afterwards takes the place of what was known before.
void addOutputsTo(Context& outputs, const std::vector<Assignment>& completed) {
    for (Assignment assignment : completed) {
        assignment.place = {};  // in no file, whatever line of the cache it comes from
        outputs.erase(assignment.name.str());
        outputs.addAssignment(assignment, ModifierMode::Copy);
    }
}

std::vector<Assignment> assignmentsOf(const Context& context) {
    std::vector<Assignment> assignments;
    for (const auto& [name, assignment] : context.assignments()) {
        assignments.push_back(assignment);
    }
    return assignments;
}

/// What a target's recipes say about it before they run.
std::shared_ptr<Context> knownOutputs(const RecipeSet& set) {
    auto outputs = std::make_shared<Context>();
    for (Assignment assignment : set.assignments) {
        assignment.state = ResolveState::Resolved;
        outputs->addAssignment(assignment, ModifierMode::Copy);
    }
    return outputs;
}

/// Files that dependencies have told of; who has such a file among its outputs hands it on.
std::unordered_set<std::string> filesOfDependencies(const Context& target) {
    std::unordered_set<std::string> files;
    for (const auto& [name, assignment] : target.assignments()) {
        if (valueAs<VeskContext>(assignment.value.get()) != nullptr) {
            for (std::string& file : pathsIn(assignment)) {
                files.insert(std::move(file));
            }
        }
    }
    return files;
}

/// Different from all others of all builds.
std::string uniqueStamp() {
    static const unsigned process = std::random_device()();
    static unsigned count = 0;
    return fmt::format("{:x}-{:x}-{}", process, platform::fileClock(), ++count);
}

/// Empty where it depends on what has changed.
std::string_view reasonToRun(const DriverOptions& options, Runs runs) {
    if (options.rebuild) {
        return "everything is to be built again";
    }
    switch (runs) {
        case Runs::AsNeeded:
            return {};
        case Runs::Again:
            return "it is to run again";
        case Runs::Always:
            break;
    }
    return "ALWAYS says that it runs in every build";
}

events::Outcome outcomeOf(TargetEnd end, bool groups) noexcept {
    switch (end) {
        case TargetEnd::Ran:
            return groups ? events::Outcome::Group : events::Outcome::Built;
        case TargetEnd::UpToDate:
            return groups ? events::Outcome::Group : events::Outcome::Fresh;
        case TargetEnd::NotBegun:
            break;
    }
    return events::Outcome::NotBegun;
}

}  // namespace

TargetBuild::TargetBuild(const BuildSetting& setting, BuildSubject subject)
    : setting_(setting),
      subject_(std::move(subject)),
      set_(std::make_shared<RecipeSet>(subject_.builder->createRecipes(*subject_.context))) {
    if (!set_->ok) {
        throw VeskException("Tool '" + subject_.toolName + "' made no recipes.");
    }
    for (Recipe& command : subject_.builder->commandRecipes(*subject_.context)) {
        set_->recipes.push_back(std::move(command));
    }
    hasRecipes_ = !set_->recipes.empty();
    if (setting_.onRecipes) {
        setting_.onRecipes(set_->recipes);
    }
    if (setting_.options.onlyRecipes) {
        return;
    }
    CacheRequest request =
        cacheRequest({*subject_.context, *subject_.builder, set_->assignments, set_->recipes,
                      subject_.dependencies, setting_.options.hidden},
                     subject_.cache.root());
    request.again = reasonToRun(setting_.options, subject_.runs);
    cache_ = std::make_unique<CacheStep>(subject_.cache, subject_.cacheKey, std::move(request),
                                         setting_.options, subject_.seenAs);
}

TargetBuild::TargetBuild(const BuildSetting& setting, BuildSubject subject, KeptRecipes kept,
                         TargetResult result)
    : setting_(setting),
      subject_(std::move(subject)),
      set_(std::make_shared<RecipeSet>(RecipeSet{std::move(kept.recipes), {}, true})),
      cache_(std::make_unique<CacheStep>(subject_.cache, subject_.cacheKey, std::move(kept.request),
                                         setting_.options, subject_.seenAs)),
      kept_(std::move(kept)),
      keptResult_(std::move(result)),
      hasRecipes_(!set_->recipes.empty()) {}

TargetBuild::TargetBuild(const BuildSetting& setting, BuildSubject subject, bool hasRecipes,
                         TargetResult result)
    : setting_(setting),
      subject_(std::move(subject)),
      set_(std::make_shared<RecipeSet>()),
      cache_(std::make_unique<CacheStep>(subject_.cache, subject_.cacheKey, CacheRequest(),
                                         setting_.options, subject_.seenAs)),
      keptResult_(std::move(result)),
      hasRecipes_(hasRecipes) {}

bool TargetBuild::isList() const {
    return isKept() ? kept_ && kept_->isList()
                    : subject_.builder->overlap(*subject_.context) == Overlap::WhenAsked;
}

std::vector<std::string> TargetBuild::ownFiles() const {
    if (isKept() || !isList()) {
        return kept_ ? kept_->ownFiles() : std::vector<std::string>();
    }
    std::vector<std::string> files = cache_->request().parts[kTargetPart].writes;
    const auto handedOn = filesOfDependencies(*subject_.context);
    std::erase_if(files, [&handedOn](const std::string& file) { return handedOn.contains(file); });
    return files;
}

std::vector<std::string> TargetBuild::mentioned(
    std::size_t recipe, const std::function<bool(const std::string&)>& isToMake) {
    if (isKept()) {
        std::vector<std::string> files = kept_->mentioned(recipe);
        std::erase_if(files, [&isToMake](const std::string& file) { return !isToMake(file); });
        return files;
    }
    if (!filesToBeMade_) {
        filesToBeMade_.emplace();
        for (const auto& [name, assignment] : subject_.context->assignments()) {
            std::ranges::copy_if(pathsIn(assignment), std::back_inserter(*filesToBeMade_),
                                 isToMake);
        }
    }
    return filesMentioned(set_->recipes[recipe], *filesToBeMade_, subject_.cache.root());
}

std::shared_ptr<const Recipe> TargetBuild::recipe(std::size_t number) const {
    if (isKept()) {
        kept_->complete(set_->recipes[number], number,
                        cache_->request().parts[kFirstRecipePart + number].writes);
    }
    return {set_, &set_->recipes[number]};
}

TargetResult TargetBuild::expected() {
    if (isKept()) {
        return keptResult_;
    }
    TargetResult result{knownOutputs(*set_), {}, {}};
    addOutputsTo(*result.outputs.context(),
                 assignmentsOf(*subject_.builder->expectedCompletion(*subject_.context)));
    if (cache_ && stampIsKnown()) {
        result.stamp = newStamp();
    }
    return result;
}

TargetResult TargetBuild::stored() const {
    TargetResult result{
        isKept() ? keptResult_.outputs : VisitOutputs(knownOutputs(*set_)), cache_->stamp(), {}};
    if (!isKept()) {
        addOutputsTo(*result.outputs.context(), cache_->storedOutputs());
    }
    if (subject_.ended) {
        subject_.ended(*this, result, true);
    }
    return result;
}

/// Whether dependants will see the same when it comes from the cache.
bool TargetBuild::isStoredAs(const TargetResult& result) const {
    const auto record = subject_.cache.last(subject_.cacheKey);
    if (!record) {
        return false;
    }
    const VisitOutputs stored(knownOutputs(*set_));
    addOutputsTo(*stored.context(), outputsOf(*record, subject_.cache.root().directory()));
    return stored.hash() == result.outputs.hash();
}

/// The record keeps what the last completion gave.
TargetResult TargetBuild::completeKept() {
    const bool stands = cache_->record(cache_->storedOutputs(), keptResult_.stamp);
    if (stands && subject_.ended) {
        subject_.ended(*this, keptResult_, false);
    }
    return keptResult_;
}

TargetResult TargetBuild::complete() {
    if (isKept()) {
        return completeKept();
    }
    TargetResult result{knownOutputs(*set_), {}, {}};
    std::vector<Assignment> completed =
        assignmentsOf(*subject_.builder->complete(*subject_.context, 0));
    addOutputsTo(*result.outputs.context(), completed);
    result.stamp = newStamp();
    const bool stands = cache_->record(std::move(completed), result.stamp);
    if (stands && subject_.ended && isStoredAs(result)) {
        subject_.ended(*this, result, false);
    }
    return result;
}

TargetResult TargetBuild::buildNow() {
    if (!cache_) {
        return expected();
    }
    if (!cache_->asked()) {
        cache_->ask();
    }
    if (!cache_->mustBuild()) {
        tellEnd(TargetEnd::UpToDate);
        tellWhatMayFollow();
        return stored();
    }
    const TargetEnd end = runRecipes() ? TargetEnd::Ran : TargetEnd::UpToDate;
    environment_.reset();
    TargetResult result =
        setting_.options.dryRun ? TargetResult{knownOutputs(*set_), {}, {}} : complete();
    tellEnd(end);
    return result;
}

/// Targets that only group others are not worth a word.
void TargetBuild::tellEnd(TargetEnd end) const {
    if (hasRecipes_) {
        setting_.events->ended(name(), end);
    }
    if (events::listened()) {
        const KeptSteps kept = keptSteps();
        events::emit(events::TargetFinished{
            subject_.seenAs, outcomeOf(end, !hasRecipes_), {}, kept.steps, kept.seconds});
    }
}

KeptSteps TargetBuild::keptSteps() const {
    const auto record = stands() ? subject_.cache.last(subject_.cacheKey) : std::nullopt;
    return record ? stepsIn(*record) : cache_->kept();
}

HiddenValues TargetBuild::hidden() const {
    HiddenValues hidden = subject_.hidden;
    if (const Context* environment = isKept() ? nullptr : environmentOf(*subject_.context)) {
        hidden.add(*environment);
    }
    return hidden;
}

/// In a dry run: that the target is up to date only as long as its dependencies are not built.
void TargetBuild::tellWhatMayFollow() const {
    BuildReasons* const reasons = setting_.options.reasons;
    if (!setting_.options.dryRun || reasons == nullptr) {
        return;
    }
    std::vector<std::string> dependencies;
    for (const DependencyStamp& dependency : subject_.dependencies) {
        dependencies.push_back(dependency.name);
    }
    const std::string chain = reasons->mayFollow(subject_.seenAs.target, dependencies);
    if (chain.empty() || set_->recipes.empty()) {
        return;
    }
    if (reasons->shows()) {
        reasons->showPossible(subject_.seenAs.target, chain);
    }
    console::normal("May follow: {}", chain);
}

/// A target that does nothing itself passes on what its dependencies say, as does one that runs in
/// every build.
bool TargetBuild::stampIsItsOwn() const {
    return !set_->recipes.empty() && subject_.runs != Runs::Always;
}

/// Dependants have to be built when this target was. Where files tell what it made, they decide.
std::string TargetBuild::newStamp() const {
    if (cache_->makesFiles()) {
        return {};
    }
    if (stampIsItsOwn()) {
        return uniqueStamp();
    }
    std::string text;
    for (const DependencyStamp& dependency : subject_.dependencies) {
        if (!dependency.stamp.empty()) {
            text += dependency.name + "\n" + dependency.stamp + "\n";
        }
    }
    if (text.empty()) {
        return {};
    }
    const ContentHash hash = hashText(text);
    return fmt::format("{:x}{:x}", hash.high, hash.low);
}

BuildEnv& TargetBuild::environment() {
    if (!environment_ && isKept()) {
        environment_.emplace(platform::pathFromUtf8(kept_->outputDirectory()));
    } else if (!environment_) {
        environment_.emplace(environmentSettings(*subject_.context));
    }
    return *environment_;
}

BuildEnv& TargetBuild::prepared(std::size_t jobs, const Recipe& first, VariablesOf variables) {
    if (!environment().prepared()) {
        environment().prepare(jobs);
        if (isKept()) {
            makeDirectories(kept_->directories());
            return environment();
        }
        makeOutputDirectories(set_->assignments);
        if (variables == VariablesOf::Process) {
            setVariables();
        }
        subject_.builder->prepare(first, environment());
    }
    return environment();
}

std::unique_ptr<Stage> TargetBuild::stageFor(const std::vector<std::size_t>& numbers) {
    SharedRecipes recipes;
    for (const std::size_t number : numbers) {
        recipes.push_back(recipe(number));
    }
    const BuildEnv& environment =
        prepared(set_->recipes.size(), *recipes.front(), VariablesOf::Commands);
    auto stage = std::make_unique<Stage>(subject_.builder.get(), recipes, environment);
    show(*stage);
    for (const auto& job : stage->jobs()) {
        for (Command& command : job->commands) {
            command.environment = variables();
        }
    }
    return stage;
}

void TargetBuild::show(Stage& stage) const {
    if (events::listened()) {
        stage.show(subject_.seenAs, hidden());
    }
}

/// Whether there was anything to run.
bool TargetBuild::runRecipes() {
    std::map<std::uint32_t, std::vector<std::size_t>> stages;
    for (std::size_t i = 0; i < set_->recipes.size(); ++i) {
        stages[set_->recipes[i].stage].push_back(i);
    }
    bool anything = false;
    for (const auto& [number, members] : stages) {
        std::vector<std::size_t> stale;
        SharedRecipes staleRecipes;
        for (const std::size_t i : members) {
            // In a dry run it is not known what the later stages would find.
            if (cache_->stale(i) || (anything && setting_.options.dryRun)) {
                stale.push_back(i);
                staleRecipes.push_back(recipe(i));
            }
        }
        if (stale.empty()) {
            continue;
        }
        anything = true;
        if (setting_.options.dryRun) {
            showCommands(*subject_.builder, staleRecipes, environment());
            continue;
        }
        const BuildEnv& environment =
            prepared(stale.size(), *staleRecipes.front(), VariablesOf::Process);
        Stage running(subject_.builder.get(), staleRecipes, environment);
        show(running);
        runStage(std::move(running), stale);
    }
    return anything;
}

void TargetBuild::runStage(Stage stage, const std::vector<std::size_t>& numbers) {
    std::vector<bool> told(numbers.size());
    const auto tellCache = [&] {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            if (!told[i] && stage.jobs()[i]->succeeded) {
                cache_->ran(numbers[i], stage.jobs()[i]->seconds);
                told[i] = true;
            }
        }
    };
    const auto keepProgress = [&] {
        tellCache();
        cache_->keepProgress();
    };
    const DriverOptions& options = setting_.options;
    // Commands may do their work on other machines, so this one's processors are no limit.
    const unsigned workers = workerCount(options.jobCount, numbers.size(), numbers.size());
    std::size_t begun = 0;
    setting_.events->expected(numbers.size());
    stage.run({workers, options.maxCommands, options.keepGoing, keepProgress,
               [&] {
                   ++begun;
                   setting_.events->stepsBegan(subject_.seenAs.target, 1);
               },
               [&] { setting_.events->stepsEnded(subject_.seenAs.target, 1); }});
    setting_.events->dropped(numbers.size() - begun);
    tellCache();
    const bool failed = stage.reportFailures();
    if (failed || platform::interruptSignal() != 0) {
        cache_->keepProgress();
    }
    stopIfInterrupted();
    if (failed) {
        tellFailed(setting_, subject_.seenAs, stage.failureText());
        console::error("Build of {} failed. Exiting..", subject_.targetName);
        throw BuildFailed();
    }
}

void TargetBuild::setVariables() {
    for (const auto& [name, value] : environmentVariables(*subject_.context)) {
        environment().setVariable(name, value);
    }
}

std::vector<std::string> TargetBuild::variables() const {
    std::vector<std::string> entries;
    if (isKept()) {
        return entries;
    }
    for (const auto& [name, value] : environmentVariables(*subject_.context)) {
        entries.push_back(name + "=" + value);
    }
    return entries;
}

}  // namespace Vesk
