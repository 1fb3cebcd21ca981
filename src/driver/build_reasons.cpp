#include "driver/build_reasons.h"

#include <fmt/format.h>
#include <unordered_set>

#include "base/console.h"
#include "cache/record_fields.h"

namespace Vesk {

/// A file that a target of this build has made, or another target by its name, leads further back.
BuildReasons::Link BuildReasons::linkFor(const Reason& reason) const {
    std::string needed;
    std::string cause = reason.text;
    if (const auto maker = makers_.find(reason.file); maker != makers_.end()) {
        needed = maker->second;
    } else if (reason.text.starts_with(requestField::kDependency)) {
        cause.erase(0, requestField::kDependency.size());
        needed = cause.substr(0, cause.find(' '));
    }
    const auto link = links_.find(needed);
    return link == links_.end() ? Link{{}, cause} : Link{needed, link->second.cause};
}

std::string BuildReasons::textOf(const Link& link) const {
    return link.needed.empty() ? link.cause : chainOf(link.needed);
}

std::string BuildReasons::chainOf(const std::string& target) const {
    std::string text = target;
    const Link* link = &links_.at(target);
    for (std::size_t links = 0; !link->needed.empty(); ++links) {
        if (links == kMostLinks) {
            text += " because ...";
            break;
        }
        text += " because " + link->needed;
        link = &links_.at(link->needed);
    }
    return text + " because " + link->cause;
}

void BuildReasons::add(const std::string& target, const std::vector<Reason>& reasons,
                       const CacheRequest& request) {
    const bool hasCommands = request.parts.size() > kFirstRecipePart;
    Link first{{}, "what it made does not stand any more"};
    std::unordered_set<std::string> shown;
    for (const Reason& reason : reasons) {
        const Link link = linkFor(reason);
        first = shown.empty() ? link : first;
        if (shown.insert(textOf(link)).second && shows() && hasCommands) {
            console::writeAnswer(fmt::format("{} because {}", target, textOf(link)));
        }
    }
    if (reasons.empty() && shows() && hasCommands) {
        console::writeAnswer(fmt::format("{} because {}", target, first.cause));
    }
    links_.insert_or_assign(target, first);
    for (const CacheRequest::Part& part : request.parts) {
        for (const std::string& file : part.writes) {
            makers_.emplace(file, target);
        }
    }
    any_ = any_ || hasCommands;
}

std::string BuildReasons::mayFollow(const std::string& target,
                                    const std::vector<std::string>& dependencies) {
    for (const std::string& dependency : dependencies) {
        if (const auto link = links_.find(dependency); link != links_.end()) {
            links_.try_emplace(target, Link{dependency, link->second.cause});
            return chainOf(dependency);
        }
    }
    return {};
}

void BuildReasons::showPossible(const std::string& target, const std::string& chain) {
    console::writeAnswer(fmt::format("{} perhaps, because {}", target, chain));
}

}  // namespace Vesk
