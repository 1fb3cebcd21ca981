#include "driver/target_visit.h"

#include <fmt/format.h>
#include <map>
#include <random>

#include "base/console.h"
#include "base/interruption.h"
#include "base/text.h"
#include "driver/build_errors.h"
#include "driver/cache_request.h"
#include "driver/cache_step.h"
#include "driver/jobs.h"
#include "driver/mistyped_names.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "types/context_value.h"
#include "types/identifier_path.h"

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

std::string countOf(std::size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void printContext(const char* title, const Context& context) {
    if (console::enabled(console::level::kDetail)) {
        console::write(console::level::kDetail, console::colour::kNormal, title);
        context.print(console::level::kDetail);
    }
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

/// What is known only afterwards takes the place of what was known before.
void addOutputsTo(Context& outputs, const std::vector<Assignment>& completed) {
    for (Assignment assignment : completed) {
        assignment.place = {};  // in no file, whatever line of the cache it comes from
        outputs.erase(assignment.name.str());
        outputs.addAssignment(assignment, ModifierMode::Copy);
    }
}

/// Different from all others of all builds.
std::string uniqueStamp() {
    static const unsigned process = std::random_device()();
    static unsigned count = 0;
    return fmt::format("{:x}-{:x}-{}", process, platform::fileClock(), ++count);
}

}  // namespace

TargetVisit::TargetVisit(const BuildSetting& setting, TargetLocation location,
                         std::vector<ValuePtr> arguments, std::string key)
    : setting_(setting),
      location_(std::move(location)),
      arguments_(std::move(arguments)),
      key_(std::move(key)),
      displayName_(location_.unit->name + "::" + location_.target->name) {}

void TargetVisit::announce() const {
    console::setPrefix("[" + displayName_ + "] ");
}

std::string TargetVisit::note() const {
    return "in target " + displayName_ + " (" + location_.target->place() + ")";
}

std::string TargetVisit::neededByNote() const {
    return "needed by target " + displayName_ + " (" + location_.target->place() + ")";
}

std::vector<Assignment> TargetVisit::boundParameters() const {
    const std::vector<std::string>& names = location_.target->parameters;
    if (names.size() != arguments_.size()) {
        std::string list = names.empty() ? "" : " (" + joined(names, ", ") + ")";
        throw VeskException("Target '" + displayName_ + "' takes " +
                            countOf(names.size(), "parameter") + list + ", but gets " +
                            countOf(arguments_.size(), "argument") + ".");
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
        if (choice_.builder->subjects().count(name) != 0) {
            console::trace("Claiming variable '{}'.", name);
        }
    }
}

void TargetVisit::begin() {
    stopIfInterrupted();
    announce();
    console::normal("Visiting target");
    try {
        const auto trial = InputContext::trial(location_.target, displayName_, layers());
        choice_ = chooseTool(*trial, displayName_, setting_.staticTools,
                             setting_.declaredTools(*location_.project));
        input_.emplace(location_.target, displayName_, layers());
        outputs_.emplace(*input_);
        input_->assemble();
        reportToolChoice(choice_);
        claimVariables();
        warnOfMistypedNames(*location_.target, input_->context(), choice_);
        input_->evaluateConditions();
        dependencies_ = createDependencyList(input_->context());
    } catch (...) {
        rethrowWithNote(note());
    }
}

const DependencyRecord* TargetVisit::nextDependency() const {
    return next_ < dependencies_.size() ? &dependencies_[next_] : nullptr;
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
            return deepCopy(*value);
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
            arguments.push_back(deepCopy(*input_->context().resolveIdentifier(parameter)));
        }
    } catch (...) {
        rethrowWithNote(record.place,
                        "passed to '" + record.reference.toDisplayString() + "' " + note());
    }
    return arguments;
}

void TargetVisit::addOutputs(const TargetLocation& dependency, const TargetResult& result) {
    const DependencyRecord& record = dependencies_[next_++];
    stamps_.push_back({dependency.unit->name + "::" + dependency.target->name, result.stamp});
    try {
        outputs_->add({record, dependency.unit->name, dependency.target->name,
                       dependency.unit == location_.unit, result.outputs});
    } catch (...) {
        rethrowWithNote(note());
    }
}

void TargetVisit::skipDependency() {
    ++next_;
    failedDependency_ = true;
}

TargetResult TargetVisit::finish() {
    announce();
    TargetResult result;
    try {
        input_->addWaiting();
        input_->context().resolveVariables();
        printContext("Input context:", input_->context());
        result = buildOrReuse();
    } catch (const BuildFailed&) {
        throw;  // the messages before it have said everything
    } catch (const Interrupted&) {
        throw;
    } catch (...) {
        rethrowWithNote(note());
    }
    printContext("Output context:", *result.outputs);
    console::normal("Build done");
    return result;
}

TargetResult TargetVisit::buildOrReuse() {
    RecipeSet set = choice_.builder->createRecipes(input_->context());
    if (!set.ok) {
        throw VeskException("Tool '" + choice_.tool->name().str() + "' made no recipes.");
    }
    for (Recipe& command : choice_.builder->commandRecipes(input_->context())) {
        set.recipes.push_back(std::move(command));
    }
    if (setting_.onRecipes) {
        setting_.onRecipes(set.recipes);
    }
    ProjectCache& projectCache = setting_.cacheOf(*location_.project);
    CacheRequest request = cacheRequest({input_->context(), *choice_.builder, set.assignments,
                                         set.recipes, stamps_, setting_.options.hidden},
                                        projectCache.root());
    request.rebuild = setting_.options.rebuild;
    CacheStep cache(projectCache, cacheKey(), std::move(request), setting_.options, displayName_);

    TargetResult result{knownOutputs(set), {}};
    if (!cache.mustBuild()) {
        addOutputsTo(*result.outputs, cache.storedOutputs());
        result.stamp = cache.stamp();
        return result;
    }
    runRecipes(set, cache);
    if (setting_.options.dryRun) {
        return result;
    }
    std::vector<Assignment> completed;
    const auto completion = choice_.builder->complete(input_->context(), 0);
    for (const auto& [name, assignment] : completion->assignments()) {
        completed.push_back(assignment);
    }
    addOutputsTo(*result.outputs, completed);
    result.stamp = newStamp(cache, set.recipes.empty());
    cache.record(std::move(completed), result.stamp);
    return result;
}

/// Dependants have to be built when this target was. Where files tell what it made, they decide;
/// a target that does nothing itself passes on what its dependencies say.
std::string TargetVisit::newStamp(const CacheStep& cache, bool doesNothing) const {
    if (cache.makesFiles()) {
        return {};
    }
    if (!doesNothing) {
        return uniqueStamp();
    }
    std::string text;
    for (const DependencyStamp& dependency : stamps_) {
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

void TargetVisit::runRecipes(const RecipeSet& set, CacheStep& cache) {
    const std::vector<Recipe>& recipes = set.recipes;
    std::map<std::uint32_t, std::vector<std::size_t>> stages;
    for (std::size_t i = 0; i < recipes.size(); ++i) {
        stages[recipes[i].stage].push_back(i);
    }
    BuildEnv environment(environmentSettings());
    bool earlierShown = false;
    for (const auto& [number, members] : stages) {
        std::vector<std::size_t> stale;
        std::vector<const Recipe*> staleRecipes;
        for (const std::size_t i : members) {
            if (cache.stale(i) || earlierShown) {
                stale.push_back(i);
                staleRecipes.push_back(&recipes[i]);
            }
        }
        if (stale.empty()) {
            continue;
        }
        if (setting_.options.dryRun) {
            showCommands(*choice_.builder, staleRecipes, environment);
            earlierShown = true;  // what the later stages would find is not known
            continue;
        }
        if (!environment.prepared()) {
            environment.prepare(stale.size());
            makeOutputDirectories(set.assignments);
            setEnvironment(environment);
            choice_.builder->prepare(*staleRecipes.front(), environment);
        }
        runStage(Stage(*choice_.builder, staleRecipes, environment), stale, cache);
    }
}

void TargetVisit::runStage(Stage stage, const std::vector<std::size_t>& numbers, CacheStep& cache) {
    std::vector<bool> told(numbers.size());
    const auto tellCache = [&] {
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            if (!told[i] && stage.jobs()[i]->succeeded) {
                cache.ran(numbers[i]);
                told[i] = true;
            }
        }
    };
    const auto keepProgress = [&] {
        tellCache();
        cache.keepProgress();
    };
    const DriverOptions& options = setting_.options;
    // Commands may do their work on other machines, so this one's processors are no limit.
    const unsigned workers = workerCount(options.jobCount, numbers.size(), numbers.size());
    stage.run({workers, options.keepGoing, keepProgress});
    tellCache();
    const bool failed = stage.reportFailures();
    if (failed || platform::interruptSignal() != 0) {
        cache.keepProgress();
    }
    stopIfInterrupted();
    if (failed) {
        console::error("Build of {} failed. Exiting..", location_.target->name);
        throw BuildFailed();
    }
}

BuildEnvSettings TargetVisit::environmentSettings() const {
    const Context& context = *input_->shared();
    BuildEnvSettings settings;
    settings.outputName = context.textOf("OUTPUT_NAME").value_or("");
    settings.outputDir = context.textOf("OUTPUT_DIR").value_or("");
    settings.projectRoot = platform::pathFromUtf8(context.textOf("PROJECT_ROOT").value_or(""));
    settings.outputDefDir = context.textOf("OUTPUT_DEF_DIR").value_or("");
    settings.profile = context.textOf("PROFILE").value_or("");
    return settings;
}

void TargetVisit::setEnvironment(BuildEnv& environment) const {
    const Assignment* variables = input_->shared()->find(kEnvironmentVariable);
    const auto* nested =
        variables != nullptr ? valueAs<VeskContext>(variables->value.get()) : nullptr;
    if (nested == nullptr) {
        return;
    }
    for (const auto& [name, assignment] : nested->context()->assignments()) {
        environment.setVariable(name.str(), assignment.value ? assignment.value->toString() : "");
    }
}

/// One cache belongs to one project: unit, target, arguments and profile tell its records apart.
std::string TargetVisit::cacheKey() const {
    std::string key = displayName_;
    for (const ValuePtr& argument : arguments_) {
        key += "(" + setting_.options.hidden.masked(argument->toDisplayString()) + ")";
    }
    return location_.project->profile.empty() ? key : key + " " + location_.project->profile;
}

}  // namespace Vesk
