#include "build/driver/cache_step.h"

#include "base/console.h"
#include "platform/files.h"
#include "types/context_value.h"

namespace Vesk {
namespace {

/// The target itself stands first in its record, before its recipes: what the builder consumes as
/// inputs, what dependants see as outputs.
constexpr std::size_t kTargetPart = 0;

CacheRecipe targetPart(const TargetContext& target, const Builder& builder) {
    CacheRecipe part;
    for (const auto& [name, subject] : builder.subjects()) {
        if (const Assignment* assignment = target.find(name)) {
            part.inputs.push_back({deepCopy(*assignment), std::nullopt});
        }
    }
    return part;
}

CacheRecipe recipePart(const Recipe& recipe) {
    CacheRecipe part;
    part.inputs.push_back({textAssignment("command", recipe.command), std::nullopt});
    if (!recipe.workingDirectory.empty()) {
        part.inputs.push_back(
            {textAssignment("cwd", platform::pathToUtf8(recipe.workingDirectory)), std::nullopt});
    }
    for (const RecipeInput& input : recipe.inputs) {
        part.inputs.push_back({input.assignment, input.intermediate});
    }
    part.outputs = recipe.outputs;
    return part;
}

}  // namespace

CacheRequest cacheRequest(const TargetContext& target, const Builder& builder,
                          const std::vector<Recipe>& recipes) {
    CacheRequest request;
    request.recipes.push_back(targetPart(target, builder));
    for (const Recipe& recipe : recipes) {
        request.recipes.push_back(recipePart(recipe));
    }
    const Assignment* environment = target.find("ENV");
    if (environment != nullptr) {
        request.environment.push_back(deepCopy(*environment));
    }
    return request;
}

CacheStep::CacheStep(BuildCache& cache, std::string key, CacheRequest request,
                     const std::string& displayName)
    : cache_(cache),
      key_(std::move(key)),
      request_(std::move(request)),
      obtained_(cache.obtain(key_, request_, Claim::yes, 0)) {
    switch (obtained_.answer) {
        case CacheAnswer::Hit:
            console::trace("Cache hit for '{}'.", displayName);
            return;
        case CacheAnswer::Claimed:
            console::trace("Cache claimed for '{}'.", displayName);
            return;
        case CacheAnswer::Miss:
            console::trace("Cache miss for '{}'. Building...", displayName);
            return;
        case CacheAnswer::Refused:
            break;
    }
    throw VeskException("Unable to obtain cache record for " + displayName);
}

CacheStep::~CacheStep() {
    if (obtained_.token != 0) {
        cache_.release(key_, obtained_.token);
    }
}

std::shared_ptr<Context> CacheStep::storedOutputs() const {
    auto outputs = std::make_shared<Context>();
    for (const Assignment& assignment : obtained_.record->recipes.at(kTargetPart).outputs) {
        outputs->addAssignment(deepCopy(assignment), ModifierMode::Copy);
    }
    return outputs;
}

void CacheStep::record(const Context& outputs, const std::string& displayName) {
    if (obtained_.answer != CacheAnswer::Claimed) {
        return;
    }
    CacheRecord record;
    record.key = key_;
    record.recipes = std::move(request_.recipes);
    record.environment = std::move(request_.environment);
    for (const auto& [name, assignment] : outputs.assignments()) {
        record.recipes.at(kTargetPart).outputs.push_back(deepCopy(assignment));
    }
    const std::uint64_t token = std::exchange(obtained_.token, 0);
    if (!cache_.upsert(key_, std::move(record), token)) {
        throw VeskException("Unable to update cache record for " + displayName);
    }
}

}  // namespace Vesk
