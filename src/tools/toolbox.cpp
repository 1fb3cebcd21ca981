#include "tools/toolbox.h"

#include <stdexcept>
#include <utility>

namespace Vesk {

namespace {

std::int32_t scoreOf(const MatchResult& result, const MatchWeights& weights) {
    std::int32_t score = 0;
    for (const auto& [key, kind] : result.matches) {
        switch (kind) {
            case MatchKind::ExactMatch:
                score += weights.exact;
                break;
            case MatchKind::PartialMatch:
                score += weights.partial;
                break;
            case MatchKind::NoMatch:
                score += weights.none;
                break;
        }
    }
    return score;
}

}  // namespace

int Toolbox::add(std::unique_ptr<Matcher> matcher) {
    if (!matcher) {
        throw std::invalid_argument("Cannot add a null toolchain to a Toolbox.");
    }
    std::unique_ptr<Matcher>& place = matchers_[matcher->name()];
    const bool replaces = place != nullptr;
    place = std::move(matcher);
    if (replaces) {
        comparedNames_.clear();
        for (const auto& [name, tool] : matchers_) {
            collectComparedNames(*tool);
        }
    } else {
        collectComparedNames(*place);
    }
    return replaces ? 1 : 0;
}

Selection Toolbox::select(const Context& target, const MatchWeights& weights) const {
    Selection best;
    for (const auto& [name, matcher] : matchers_) {
        MatchResult result = matcher->match(target, Matcher::Comparison::IfNeeded);
        if (result.note != MatchNote::BuildPossible) {
            continue;
        }
        const std::int32_t score = scoreOf(result, weights);
        if (best.matcher == nullptr || score > best.score) {
            best = {matcher.get(), score, std::move(result)};
        }
    }
    return best;
}

const Matcher* Toolbox::find(std::string_view name) const {
    const auto found = matchers_.find(name);
    return found == matchers_.end() ? nullptr : found->second.get();
}

void Toolbox::collectComparedNames(const Matcher& matcher) {
    for (CiString& name : matcher.comparedNames()) {
        comparedNames_.insert(std::move(name));
    }
}

std::vector<const Matcher*> Toolbox::tools() const {
    std::vector<const Matcher*> tools;
    std::ranges::transform(matchers_, std::back_inserter(tools),
                           [](const auto& entry) { return entry.second.get(); });
    return tools;
}

const Selection& betterOf(const Selection& fromStatic, const Selection& fromDeclared) noexcept {
    const bool declaredWins =
        fromDeclared.matcher != nullptr &&
        (fromStatic.matcher == nullptr || fromDeclared.score >= fromStatic.score);
    return declaredWins ? fromDeclared : fromStatic;
}

}  // namespace Vesk
