#include "build/driver/target_visit.h"

#include "base/console.h"
#include "base/text.h"
#include "build/driver/build_errors.h"
#include "build/driver/cache_step.h"
#include "build/driver/jobs.h"
#include "platform/files.h"
#include "types/context_value.h"
#include "types/identifier_path.h"

namespace Vesk {
namespace {

constexpr const char* kEnvironmentVariable = "ENV";

/// The path without its last segment.
IdentifierPath enclosingPath(const IdentifierPath& path) {
    return IdentifierPath({path.segments.begin(), path.segments.end() - 1});
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
            setting_.catalog.implicitContext(*location_.project), boundParameters()};
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
        input_->context().evaluateConditions();
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
        rethrowWithNote(neededByNote());
    }
}

std::vector<ValuePtr> TargetVisit::argumentsForNext() {
    const DependencyRecord& record = dependencies_[next_];
    std::vector<ValuePtr> arguments;
    try {
        if (record.sourceParameter) {
            const bool ownMacro = record.macro.segments.size() < 2;
            arguments.push_back(
                ownMacro ? VeskContext::referringTo(input_->shared())
                         : input_->context().resolveIdentifier(enclosingPath(record.macro)));
        }
        for (const IdentifierPath& parameter : record.parameters) {
            arguments.push_back(deepCopy(*input_->context().resolveIdentifier(parameter)));
        }
    } catch (...) {
        rethrowWithNote("passed to '" + record.reference.toDisplayString() + "' " + note());
    }
    return arguments;
}

void TargetVisit::addOutputs(const TargetLocation& dependency,
                             const std::shared_ptr<Context>& outputs) {
    const DependencyRecord& record = dependencies_[next_++];
    try {
        outputs_->add({record, dependency.unit->name, dependency.target->name,
                       dependency.unit == location_.unit, outputs});
    } catch (...) {
        rethrowWithNote(note());
    }
}

void TargetVisit::skipDependency() {
    ++next_;
    failedDependency_ = true;
}

std::shared_ptr<Context> TargetVisit::finish() {
    announce();
    std::shared_ptr<Context> outputs;
    try {
        input_->addWaiting();
        input_->context().resolveVariables();
        printContext("Input context:", input_->context());
        outputs = buildOrReuse();
    } catch (const BuildFailed&) {
        throw;  // the messages before it have said everything
    } catch (const Interrupted&) {
        throw;
    } catch (...) {
        rethrowWithNote(note());
    }
    printContext("Output context:", *outputs);
    console::normal("Build done");
    return outputs;
}

std::shared_ptr<Context> TargetVisit::buildOrReuse() {
    const RecipeSet set = choice_.builder->createRecipes(input_->context());
    if (!set.ok) {
        throw VeskException("Tool '" + choice_.tool->name().str() + "' made no recipes.");
    }
    std::vector<Recipe> recipes = set.recipes;
    for (Recipe& command : choice_.builder->commandRecipes(input_->context())) {
        recipes.push_back(std::move(command));
    }
    CacheStep cache(setting_.cacheOf(*location_.project), cacheKey(),
                    cacheRequest(input_->context(), *choice_.builder, recipes), displayName_);
    if (!cache.mustBuild()) {
        return cache.storedOutputs();
    }
    auto outputs = build(set, recipes);
    if (!setting_.options.dryRun) {
        cache.record(*outputs, displayName_);
    }
    return outputs;
}

std::shared_ptr<Context> TargetVisit::build(const RecipeSet& set,
                                            const std::vector<Recipe>& recipes) {
    if (!recipes.empty()) {
        runRecipes(recipes);
    }
    auto outputs = std::make_shared<Context>();
    for (Assignment assignment : set.assignments) {
        assignment.state = ResolveState::Resolved;
        outputs->addAssignment(assignment, ModifierMode::Copy);
    }
    if (setting_.options.dryRun) {
        return outputs;
    }
    const auto completed = choice_.builder->complete(input_->context(), 0);
    for (const auto& [name, assignment] : completed->assignments()) {
        outputs->erase(name);
        outputs->addAssignment(assignment, ModifierMode::Copy);
    }
    return outputs;
}

void TargetVisit::runRecipes(const std::vector<Recipe>& recipes) {
    BuildEnv environment(environmentSettings());
    if (setting_.options.dryRun) {
        showJobs(*choice_.builder, recipes, environment);
        return;
    }
    environment.prepare(recipes.size());
    setEnvironment(environment);
    choice_.builder->prepare(recipes.front(), environment);
    runJobs(*choice_.builder, recipes, environment, location_.target->name);
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
        variables != nullptr ? dynamic_cast<const VeskContext*>(variables->value.get()) : nullptr;
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
        key += "(" + argument->toDisplayString() + ")";
    }
    return location_.project->profile.empty() ? key : key + " " + location_.project->profile;
}

}  // namespace Vesk
