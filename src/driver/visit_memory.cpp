#include "driver/visit_memory.h"

#include <algorithm>
#include <utility>

#include "base/bytes.h"
#include "base/exception.h"
#include "driver/target_environment.h"
#include "keep/encoding.h"
#include "platform/files.h"

namespace Vesk {
namespace {

std::string hashBytes(const ContentHash& hash) {
    Encoder out;
    out.hash(hash);
    return std::move(out.bytes);
}

VisitStore::RecordHash recordIn(ProjectCache& cache, std::string key) {
    return [&cache, key = std::move(key)] { return cache.recordHash(key); };
}

/// What differs between a kept visit and one that was made; null: nothing.
const char* difference(const KeptVisit& kept, const KeptVisit& made) {
    if (kept.saidFirst != made.saidFirst || kept.saidLast != made.saidLast) {
        return "its messages";
    }
    if (kept.askedFirst != made.askedFirst || kept.askedLast != made.askedLast) {
        return "what it asks";
    }
    if (kept.outputs != made.outputs || kept.stamp != made.stamp) {
        return "its outputs";
    }
    if (kept.recordKey != made.recordKey || kept.overlaps != made.overlaps ||
        kept.hasRecipes != made.hasRecipes) {
        return "how it is built";
    }
    if (kept.recipes != made.recipes) {
        return "its recipes";
    }
    const auto same = [](const KeptDependency& a, const KeptDependency& b) {
        return a.reference.toDisplayString() == b.reference.toDisplayString() &&
               a.arguments == b.arguments && a.outputs == b.outputs && a.stamp == b.stamp &&
               a.said == b.said;
    };
    return std::ranges::equal(kept.dependencies, made.dependencies, same) ? nullptr
                                                                          : "its dependencies";
}

}  // namespace

const ContentHash& VisitKeeper::surroundingsIn(const Project& project) {
    const auto found = known_.find(&project);
    return found != known_.end() ? found->second
                                 : known_.emplace(&project, surroundings_(project)).first->second;
}

VisitMemory::VisitMemory(VisitKeeper* keeper, const TargetLocation& location,
                         const std::string& displayName, const std::vector<ValuePtr>& arguments)
    : keeper_(location.target->hash ? keeper : nullptr) {
    if (keeper_ == nullptr) {
        return;
    }
    const auto given = encoded(arguments);
    if (!given) {
        keeper_ = nullptr;
        return;
    }
    const Project& project = *location.project;
    key_ = hashText({platform::pathToUtf8(project.root), "\n", project.profile, "\n",
                     platform::pathToUtf8(*location.target->file), "\n", location.unit->name, "\n",
                     location.target->name, "\n", *given});
    digest_ = hashText({hashBytes(*location.target->hash), displayName, "\n",
                        hashBytes(keeper_->surroundingsIn(project))});
}

void VisitMemory::begin() {
    if (keeper_ == nullptr || (!keeper_->use().takes && !keeper_->use().checks)) {
        return;
    }
    kept_ = keeper_->store().find(key_);
    if (!kept_) {
        return;
    }
    const bool readable =
        !kept_->saysMore() || (console::threshold() == console::kDefaultThreshold &&
                               kept_->coloured == console::coloursWanted());
    if (kept_->digest != digest_ || !readable || !platform::stillValid(kept_->askedFirst)) {
        leave();
    } else if (taken() != nullptr) {
        console::repeat(kept_->saidFirst);
    }
}

const KeptVisit* VisitMemory::taken() const noexcept {
    return kept_ && !keeper_->use().checks ? &*kept_ : nullptr;
}

std::optional<TargetResult> VisitMemory::resultOf(const ContentHash& visit) const {
    if (keeper_ == nullptr || keeper_->store().hash(key_) != visit) {
        return std::nullopt;
    }
    const auto kept = keeper_->store().find(key_);
    if (!kept || kept->digest != digest_) {
        return std::nullopt;
    }
    return TargetResult{VisitOutputs::fromKept(kept->outputs), std::string(kept->stamp), nullptr};
}

bool VisitMemory::takesThat(const ContentHash& visit) const {
    return taken() != nullptr && keeper_->store().hash(key_) == visit;
}

bool VisitMemory::sameOutputs(std::size_t number, const TargetResult& result) const {
    const KeptDependency& dependency = kept_->dependencies[number];
    return result.outputs.hash() == dependency.outputs && result.stamp == dependency.stamp;
}

bool VisitMemory::ends(ProjectCache& cache, const ProjectCache::StandingQuestion& question) {
    if (!platform::stillValid(kept_->askedLast)) {
        return false;
    }
    std::string key(kept_->recordKey);
    const auto standing = cache.standing(key, kept_->record, question);
    if (standing == ProjectCache::Standing::refreshed) {
        keeper_->store().renew(key_, recordIn(cache, std::move(key)));
        kept_ = keeper_->store().find(key_);
    }
    if (standing == ProjectCache::Standing::no) {
        return false;
    }
    keeper_->store().confirm(key_);
    return true;
}

std::optional<KeptRecipes> VisitMemory::recipes(ProjectCache& cache) const {
    const std::string key(kept_->recordKey);
    const bool stampIsItsOwn = kept_->hasRecipes && !kept_->stamp.empty();
    if (kept_->recipes.empty() || stampIsItsOwn || !platform::stillValid(kept_->askedLast) ||
        cache.recordHash(key) != kept_->record) {
        return std::nullopt;
    }
    const auto record = cache.last(key);
    return record ? KeptRecipes::decoded(kept_->recipes, *record, cache.root()) : std::nullopt;
}

void VisitMemory::builtAgain(ProjectCache& cache) {
    std::string key(kept_->recordKey);
    if (cache.recordHash(key) != kept_->record) {
        keeper_->store().renew(key_, recordIn(cache, std::move(key)));
    }
    keeper_->store().confirm(key_);
}

VisitMemory::Watch::Watch(VisitMemory& memory, Part part, console::MessageCopy::Shown shown) {
    if (memory.keeper_ == nullptr) {
        if (shown == console::MessageCopy::Shown::no) {
            messages_.emplace(memory.made_.saidFirst, shown);
        }
        return;
    }
    Made& made = memory.made_;
    questions_.emplace(part == Part::first ? made.askedFirst : made.askedLast);
    messages_.emplace(memory.saidIn(part), shown);
}

std::string& VisitMemory::saidIn(Part part) {
    switch (part) {
        case Part::first:
            return made_.saidFirst;
        case Part::arguments:
            return made_.saidOfArguments;
        case Part::outputs:
            return made_.dependencies.back().said;
        case Part::last:
            break;
    }
    return made_.saidLast;
}

void VisitMemory::depends(const DependencyReference& reference,
                          const std::vector<ValuePtr>& arguments) {
    if (keeper_ != nullptr) {
        made_.dependencies.push_back({reference, encoded(arguments), std::nullopt, {}});
    }
}

void VisitMemory::gets(const TargetResult& result) {
    if (keeper_ != nullptr) {
        made_.dependencies.back().outputs = result.outputs.hash();
    }
}

/// Nothing when something of it cannot be kept.
std::optional<KeptVisit> VisitMemory::visitMade(const TargetBuild& build, bool overlaps,
                                                const TargetResult& result) const {
    const BuildSubject& subject = build.subject();
    if (!made_.askedFirst.repeatable || !made_.askedLast.repeatable ||
        !made_.saidOfArguments.empty() ||
        made_.dependencies.size() != subject.dependencies.size() || !result.outputs.encoded()) {
        return std::nullopt;
    }
    KeptVisit visit;
    visit.digest = digest_;
    visit.askedFirst = made_.askedFirst.recording;
    visit.askedLast = made_.askedLast.recording;
    visit.saidFirst = made_.saidFirst;
    visit.saidLast = made_.saidLast;
    visit.coloured = console::coloursWanted();
    visit.overlaps = overlaps;
    visit.hasRecipes = !build.recipes().empty();
    visit.outputs = *result.outputs.encoded();
    visit.stamp = result.stamp;
    visit.recordKey = subject.cacheKey;
    visit.tool = subject.toolName;
    for (std::size_t i = 0; i < made_.dependencies.size(); ++i) {
        const Dependency& dependency = made_.dependencies[i];
        if (!dependency.arguments || !dependency.outputs) {
            return std::nullopt;
        }
        visit.dependencies.push_back({dependency.reference, *dependency.arguments,
                                      *dependency.outputs, subject.dependencies[i].stamp,
                                      dependency.said});
    }
    return visit;
}

bool VisitMemory::isSecret(const BuildSubject& subject, std::string_view kept) {
    HiddenValues hidden = subject.hidden;
    if (const Assignment* environment = subject.context->find(kEnvironmentVariable)) {
        hidden.add(environment->value.get());
    }
    return hidden.showIn(kept);
}

void VisitMemory::check(const KeptVisit& made, const std::string& name, bool hit) const {
    const char* what = hit ? difference(*kept_, made) : "that it needs no building";
    if (what != nullptr) {
        throw VeskException("The kept visit of '" + name + "' would have been wrong in " + what +
                            ".");
    }
}

void VisitMemory::made(const TargetBuild& build, bool overlaps, const TargetResult& result,
                       bool hit) {
    if (keeper_ == nullptr || (!keeper_->use().keeps && !kept_)) {
        return;
    }
    const BuildSubject& subject = build.subject();
    auto visit = visitMade(build, overlaps, result);
    const std::string recipes = encodedRecipes(build);
    if (visit && !isSecret(subject, recipes)) {
        visit->recipes = recipes;
    }
    if (!visit) {
        if (kept_) {
            throw VeskException("The kept visit of '" + subject.seenAs.target +
                                "' cannot be kept any more.");
        }
        return;
    }
    if (kept_) {
        check(*visit, subject.seenAs.target, hit);
    }
    if (keeper_->use().keeps && !isSecret(subject, encoded(*visit))) {
        keeper_->store().put(key_, *visit, recordIn(subject.cache, subject.cacheKey));
    }
}

}  // namespace Vesk
