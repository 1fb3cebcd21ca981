#include "report/history.h"

#include <algorithm>
#include <cmath>

#include "report/analysis.h"
#include "report/event_lines.h"
#include "report/json.h"

namespace Vesk::report {
namespace {

constexpr int kVersion = 1;
constexpr std::size_t kMostSteps = 10;

/// Small numbers keep the file small.
double rounded(double seconds) noexcept {
    constexpr double kThousand = 1000;
    return std::round(seconds * kThousand) / kThousand;
}

Json jsonOf(const PastRun& run) {
    Json steps = Json::array();
    for (const PastRun::Step& step : run.slowest) {
        steps.push_back(
            {{"target", step.target}, {"makes", step.makes}, {"seconds", step.seconds}});
    }
    return {{"when", run.when},
            {"seconds", run.seconds},
            {"target", run.target},
            {"profile", run.profile},
            {"outcome", run.outcome},
            {"jobs", run.jobs},
            {"built", run.built},
            {"fresh", run.fresh},
            {"failed", run.failed},
            {"commands", run.commands},
            {"command_seconds", run.commandSeconds},
            {"slowest", std::move(steps)}};
}

PastRun runFrom(const Json& json) {
    PastRun run;
    json.at("when").get_to(run.when);
    json.at("seconds").get_to(run.seconds);
    json.at("target").get_to(run.target);
    json.at("profile").get_to(run.profile);
    json.at("outcome").get_to(run.outcome);
    json.at("jobs").get_to(run.jobs);
    json.at("built").get_to(run.built);
    json.at("fresh").get_to(run.fresh);
    json.at("failed").get_to(run.failed);
    json.at("commands").get_to(run.commands);
    json.at("command_seconds").get_to(run.commandSeconds);
    for (const Json& step : json.at("slowest")) {
        run.slowest.push_back({step.at("target").get<std::string>(),
                               step.at("makes").get<std::string>(),
                               step.at("seconds").get<double>()});
    }
    return run;
}

}  // namespace

PastRun summaryOf(const RunRecord& run, std::int64_t when) {
    const Totals totals = totalsOf(run);
    PastRun past;
    past.when = when;
    past.seconds = rounded(seconds(run.ended));
    if (!run.visits.empty()) {
        past.target = run.visits.front().name();
        past.profile = run.visits.front().about.profile;
    }
    past.outcome = nameOf(run.outcome);
    past.jobs = run.about.jobs;
    past.built = totals.built;
    past.fresh = totals.fresh;
    past.failed = totals.failed;
    past.commands = run.commands.size();
    past.commandSeconds = rounded(totals.commandTime);
    for (const std::size_t number : slowest(run, kMostSteps)) {
        const CommandRecord& command = run.commands[number];
        past.slowest.push_back(
            {run.visits[command.visit].name(), command.makes, rounded(seconds(command.length()))});
    }
    return past;
}

std::vector<PastRun> runsIn(std::string_view text) {
    std::vector<PastRun> runs;
    try {
        const Json json = Json::parse(text);
        if (json.at("version") == kVersion) {
            for (const Json& run : json.at("runs")) {
                runs.push_back(runFrom(run));
            }
        }
    } catch (const Json::exception&) {
        runs.clear();
    }
    return runs;
}

std::string historyText(const std::vector<PastRun>& runs) {
    const std::size_t first = runs.size() - std::min(runs.size(), kMostRuns);
    Json kept = Json::array();
    for (std::size_t i = first; i < runs.size(); ++i) {
        kept.push_back(jsonOf(runs[i]));
    }
    return textOf(Json{{"version", kVersion}, {"runs", std::move(kept)}}) + "\n";
}

const PastRun* lastLike(const PastRun& run, const std::vector<PastRun>& runs) {
    for (auto past = runs.rbegin(); past != runs.rend(); ++past) {
        if (past->target == run.target && past->profile == run.profile) {
            return &*past;
        }
    }
    return nullptr;
}

}  // namespace Vesk::report
