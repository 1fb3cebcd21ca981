#include "report/analysis.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <sstream>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "base/printable.h"
#include "base/text.h"

namespace Vesk::report {
namespace {

using events::Time;

void countVisits(const RunRecord& run, Totals& totals) {
    for (const VisitRecord& visit : run.visits) {
        std::size_t* const counters[] = {&totals.built,  &totals.fresh,   &totals.groups,
                                         &totals.failed, &totals.skipped, &totals.notBegun};
        ++*counters[static_cast<std::size_t>(visit.outcome)];
        totals.keptVisits += visit.kept ? 1 : 0;
        totals.keptSteps += visit.keptSteps;
        totals.keptTime += visit.keptSeconds;
    }
}

void countCommands(const RunRecord& run, Totals& totals) {
    std::map<Time, int> changes;
    for (const CommandRecord& command : run.commands) {
        totals.failedCommands += command.failed() ? 1 : 0;
        totals.commandTime += seconds(command.length());
        totals.processorTime += command.usage.processorSeconds;
        ++changes[command.began];
        --changes[command.ended];
    }
    unsigned running = 0;
    Time since{0};
    for (const auto& [at, change] : changes) {
        totals.running += running > 0 ? seconds(at - since) : 0;
        since = at;
        running += static_cast<unsigned>(change);
        totals.mostAtOnce = std::max(totals.mostAtOnce, running);
    }
}

/// Activities are nested: each one's time is its own without that of those within it.
void countActivities(const RunRecord& run, Totals& totals) {
    std::vector<const ActivityRecord*> around;
    const auto timeOf = [&totals](const ActivityRecord& activity) -> double& {
        return activity.activity == events::Activity::Read ? totals.reading : totals.cache;
    };
    for (const ActivityRecord& activity : run.activities) {
        while (!around.empty() && around.back()->ended <= activity.began) {
            around.pop_back();
        }
        if (!around.empty()) {
            timeOf(*around.back()) -= seconds(activity.length());
        }
        timeOf(activity) += seconds(activity.length());
        around.push_back(&activity);
    }
}

/// Looks for the longest chain of commands that needed one another, going once through the run as
/// it went.
class PathFinder {
  public:
    explicit PathFinder(const RunRecord& run)
        : run_(run), chains_(run.commands.size()), ended_(run.visits.size()) {}

    std::vector<std::size_t> path() {
        std::vector<std::size_t> begins(run_.commands.size());
        std::iota(begins.begin(), begins.end(), std::size_t{0});
        std::vector<std::size_t> ends = begins;
        const auto& commands = run_.commands;
        std::ranges::stable_sort(begins, {}, [&](std::size_t i) { return commands[i].began; });
        std::ranges::stable_sort(ends, {}, [&](std::size_t i) { return commands[i].ended; });
        auto end = ends.begin();
        for (const std::size_t number : begins) {
            for (; end != ends.end() && commands[*end].ended <= commands[number].began; ++end) {
                noteEnd(*end);
            }
            begin(number);
        }
        return chainTo(best_);
    }

  private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    struct Chain {
        Time length{0};  ///< with the command itself
        std::size_t before = kNone;
    };

    /// Of a visit: the ends of the longest chains so far.
    struct Ended {
        std::size_t best = kNone;
        std::map<unsigned, std::size_t> byStage;
        std::unordered_map<events::Id, std::size_t> lastOfStep;
    };

    void takeLonger(std::size_t& chain, std::size_t other) const {
        if (chain == kNone || (other != kNone && chains_[chain].length < chains_[other].length)) {
            chain = other;
        }
    }

    void noteEnd(std::size_t number) {
        const CommandRecord& command = run_.commands[number];
        Ended& ended = ended_[command.visit];
        takeLonger(ended.best, number);
        takeLonger(ended.byStage.try_emplace(command.stage, kNone).first->second, number);
        ended.lastOfStep[command.step] = number;
    }

    void begin(std::size_t number) {
        const CommandRecord& command = run_.commands[number];
        const Ended& own = ended_[command.visit];
        std::size_t before = longestBelow(command.visit);
        for (const auto& [stage, chain] : own.byStage) {
            if (stage < command.stage) {
                takeLonger(before, chain);
            }
        }
        if (const auto last = own.lastOfStep.find(command.step); last != own.lastOfStep.end()) {
            takeLonger(before, last->second);
        }
        const Time waited = before == kNone ? Time(0) : chains_[before].length;
        chains_[number] = {waited + command.length(), before};
        takeLonger(best_, number);
    }

    /// A target's commands have what is below it in their chains; one without is looked through.
    std::size_t longestBelow(std::size_t visit) const {
        std::size_t longest = kNone;
        std::vector<std::size_t> left = run_.visits[visit].needs;
        std::unordered_set<std::size_t> seen;
        while (!left.empty()) {
            const std::size_t below = left.back();
            left.pop_back();
            if (!seen.insert(below).second) {
                continue;
            }
            takeLonger(longest, ended_[below].best);
            if (ended_[below].best == kNone) {
                const std::vector<std::size_t>& needs = run_.visits[below].needs;
                left.insert(left.end(), needs.begin(), needs.end());
            }
        }
        return longest;
    }

    std::vector<std::size_t> chainTo(std::size_t number) const {
        std::vector<std::size_t> chain;
        for (; number != kNone; number = chains_[number].before) {
            chain.push_back(number);
        }
        std::ranges::reverse(chain);
        return chain;
    }

    const RunRecord& run_;
    std::vector<Chain> chains_;
    std::vector<Ended> ended_;
    std::size_t best_ = kNone;
};

bool hasWarning(std::string_view line) {
    return lowerCased(line).find("warning") != std::string::npos;
}

}  // namespace

Totals totalsOf(const RunRecord& run) {
    Totals totals;
    countVisits(run, totals);
    countCommands(run, totals);
    countActivities(run, totals);
    return totals;
}

std::vector<std::size_t> criticalPath(const RunRecord& run) {
    return PathFinder(run).path();
}

std::vector<std::size_t> slowest(const RunRecord& run, std::size_t most) {
    std::vector<std::size_t> commands(run.commands.size());
    std::iota(commands.begin(), commands.end(), std::size_t{0});
    const auto middle =
        commands.begin() + static_cast<std::ptrdiff_t>(std::min(most, commands.size()));
    std::ranges::partial_sort(commands, middle, [&run](std::size_t a, std::size_t b) {
        return run.commands[a].length() > run.commands[b].length();
    });
    commands.erase(middle, commands.end());
    return commands;
}

std::size_t largest(const RunRecord& run) {
    const auto memory = [](const CommandRecord& command) { return command.usage.peakMemory; };
    const auto found = std::ranges::max_element(run.commands, {}, memory);
    return found == run.commands.end() || memory(*found) == 0
               ? run.commands.size()
               : static_cast<std::size_t>(found - run.commands.begin());
}

std::vector<Warning> warningsOf(const RunRecord& run, std::size_t most) {
    std::vector<Warning> warnings;
    std::set<std::pair<std::size_t, std::string>> known;
    for (std::size_t i = 0; i < run.commands.size(); ++i) {
        const CommandRecord& command = run.commands[i];
        std::istringstream output(command.failed() ? std::string() : command.output);
        for (std::string line; warnings.size() < most && std::getline(output, line);) {
            if (hasWarning(line)) {
                line = withoutEscapes(std::string(trimmed(line)));
                if (known.emplace(command.visit, line).second) {
                    warnings.push_back({i, std::move(line)});
                }
            }
        }
    }
    return warnings;
}

}  // namespace Vesk::report
