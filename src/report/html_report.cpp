#include "report/html_report.h"

#include <map>
#include <string_view>
#include <utility>

#include "base/printable.h"
#include "base/text.h"
#include "report/analysis.h"
#include "report/event_lines.h"
#include "report/json.h"
#include "report/page_texts.h"
#include "report/stats.h"

namespace Vesk::report {
namespace {

/// Longer ones are cut: a page of 10,000 steps is to stay handy.
constexpr std::size_t kLongestCommand = 4000;
constexpr std::size_t kMostWarningsOnPage = 2000;

std::string shortened(std::string text) {
    if (text.size() > kLongestCommand) {
        text.replace(kLongestCommand, std::string::npos, " ...");
    }
    return text;
}

Json microseconds(events::Time time) {
    return time.count();
}

Json runJson(const RunRecord& run, std::int64_t when) {
    Json json{{"vesk", run.about.version},        {"outcome", nameOf(run.outcome)},
              {"dry_run", run.about.dryRun},      {"jobs", run.about.jobs},
              {"directory", run.about.directory}, {"when", when},
              {"time", microseconds(run.ended)}};
    if (!run.visits.empty()) {
        json["target"] = run.visits.front().name();
        addText(json, "profile", run.visits.front().about.profile);
    }
    return json;
}

/// The page counts in microseconds.
Json timeJson(double seconds) {
    constexpr double kMicroseconds = 1e6;
    return static_cast<std::int64_t>(seconds * kMicroseconds);
}

Json totalsJson(const RunRecord& run) {
    const Totals totals = totalsOf(run);
    return {{"built", totals.built},
            {"fresh", totals.fresh},
            {"failed", totals.failed},
            {"skipped", totals.skipped},
            {"not_begun", totals.notBegun},
            {"kept_visits", totals.keptVisits},
            {"kept_commands", totals.keptSteps},
            {"kept_time", timeJson(totals.keptTime)},
            {"command_time", timeJson(totals.commandTime)},
            {"processor_time", timeJson(totals.processorTime)},
            {"running_time", timeJson(totals.running)},
            {"most_at_once", totals.mostAtOnce},
            {"reading_time", timeJson(totals.reading)},
            {"cache_time", timeJson(totals.cache)}};
}

Json reasonsJson(const VisitRecord& visit) {
    Json list = Json::array();
    for (const events::ReasonFound& reason : visit.reasons) {
        Json json{{"text", reason.text}};
        addText(json, "name", reason.name);
        addText(json, "before", reason.before);
        addText(json, "now", reason.now);
        list.push_back(std::move(json));
    }
    return list;
}

Json detailedJson(const VisitRecord& visit) {
    Json json = visitJson(visit);
    addText(json, "said", shortened(withoutEscapes(visit.said)));
    json["kept_commands"] = visit.keptSteps;
    json["kept_time"] = timeJson(visit.keptSeconds);
    json["began"] = microseconds(visit.began);
    json["time"] = microseconds(visit.length());
    json["needs"] = visit.needs;
    json["commands"] = visit.commands;
    json["reasons"] = reasonsJson(visit);
    return json;
}

Json commandJson(const CommandRecord& command) {
    Json json{{"visit", command.visit},
              {"lane", command.lane},
              {"began", microseconds(command.began)},
              {"time", microseconds(command.length())},
              {"status", command.finished ? Json(command.status) : Json()},
              {"processor", timeJson(command.usage.processorSeconds)},
              {"memory", command.usage.peakMemory},
              {"command", shortened(command.command)}};
    addText(json, "makes", command.makes);
    addText(json, "output", shortened(withoutEscapes(command.output)));
    return json;
}

Json activityJson(const ActivityRecord& activity) {
    return {{"what", activity.activity == events::Activity::Read ? "read" : "cache"},
            {"began", microseconds(activity.began)},
            {"time", microseconds(activity.length())}};
}

/// From when on how many commands ran.
Json runningJson(const RunRecord& run) {
    std::map<events::Time, int> changes;
    for (const CommandRecord& command : run.commands) {
        ++changes[command.began];
        --changes[command.ended];
    }
    Json list = Json::array();
    int running = 0;
    for (const auto& [at, change] : changes) {
        running += change;
        list.push_back(Json::array({microseconds(at), running}));
    }
    return list;
}

Json warningsOnPage(const RunRecord& run) {
    Json list = Json::array();
    for (const Warning& warning : warningsOf(run, kMostWarningsOnPage)) {
        list.push_back({{"command", warning.command}, {"text", warning.text}});
    }
    return list;
}

template <class Items, class Function>
Json listOf(const Items& items, Function function) {
    Json list = Json::array();
    for (const auto& item : items) {
        list.push_back(function(item));
    }
    return list;
}

/// No end of a script, and no beginning of a comment, can stand in it.
std::string forScript(const Json& json) {
    std::string text;
    for (const char c : textOf(json)) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

std::string forHtml(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '<':
                result += "&lt;";
                break;
            case '&':
                result += "&amp;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

/// The page with its parts in their places; what a part holds is not looked at again.
std::string filled(std::string_view page,
                   const std::map<std::string_view, std::string_view>& parts) {
    std::string result;
    while (!page.empty()) {
        const std::size_t begin = page.find('@');
        const std::size_t end = begin == std::string_view::npos ? begin : page.find('@', begin + 1);
        const auto part = end == std::string_view::npos
                              ? parts.end()
                              : parts.find(page.substr(begin + 1, end - begin - 1));
        const bool found = part != parts.end();
        const std::size_t plain = found                             ? begin
                                  : begin == std::string_view::npos ? page.size()
                                                                    : begin + 1;
        result += page.substr(0, plain);
        if (found) {
            result += part->second;
        }
        page.remove_prefix(found ? end + 1 : plain);
    }
    return result;
}

}  // namespace

std::string htmlReport(const RunRecord& run, const std::vector<PastRun>& earlier,
                       std::int64_t when) {
    const Json data{{"run", runJson(run, when)},
                    {"totals", totalsJson(run)},
                    {"visits", listOf(run.visits, detailedJson)},
                    {"commands", listOf(run.commands, commandJson)},
                    {"activities", listOf(run.activities, activityJson)},
                    {"path", criticalPath(run)},
                    {"running", runningJson(run)},
                    {"warnings", warningsOnPage(run)},
                    {"earlier", Json::parse(historyText(earlier)).at("runs")}};
    const std::string name = run.visits.empty() ? "nothing" : run.visits.front().name();
    const std::string title = forHtml("Build of " + name);
    const std::string text = forScript(data);
    const std::string stats = forHtml(joined(statsLines(run, earlier), "\n"));
    return filled(kPage, {{"title", title},
                          {"style", kStyle},
                          {"script", kScript},
                          {"data", text},
                          {"stats", stats}});
}

}  // namespace Vesk::report
