#include "report/trace.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "report/event_lines.h"
#include "report/json.h"

namespace Vesk::report {
namespace {

constexpr int kProcess = 1;
constexpr unsigned kOwnLane = 0;

unsigned laneOf(const CommandRecord& command) noexcept {
    return command.lane + 1;
}

Json metadata(const char* what, unsigned lane, const Json& arguments) {
    return {{"name", what}, {"ph", "M"}, {"pid", kProcess}, {"tid", lane}, {"args", arguments}};
}

Json complete(const std::string& name, const char* category, unsigned lane,
              const Stretch& stretch) {
    return {{"name", name},
            {"cat", category},
            {"ph", "X"},
            {"ts", stretch.began.count()},
            {"dur", stretch.length().count()},
            {"pid", kProcess},
            {"tid", lane}};
}

Json eventOf(const ActivityRecord& activity) {
    const bool reads = activity.activity == events::Activity::Read;
    return complete((reads ? "read " : "cache: ") + activity.name, reads ? "reading" : "cache",
                    kOwnLane, activity);
}

Json eventOf(const VisitRecord& visit) {
    Json event = complete(visit.name(), "visit", kOwnLane, visit);
    Json arguments{{"outcome", nameOf(visit.outcome)}, {"kept", visit.kept}};
    addText(arguments, "tool", visit.tool);
    addText(arguments, "profile", visit.about.profile);
    addText(arguments, "arguments", visit.about.arguments);
    arguments["place"] = visit.about.place;
    event["args"] = std::move(arguments);
    return event;
}

Json eventOf(const CommandRecord& command, const VisitRecord& owner) {
    Json event = complete(owner.name(), "command", laneOf(command), command);
    if (command.failed()) {
        event["cname"] = "terrible";
    }
    Json arguments{{"target", owner.name()}, {"command", command.command}};
    addText(arguments, "makes", command.makes);
    arguments["status"] = command.finished ? Json(command.status) : Json("not finished");
    arguments["processor_seconds"] = command.usage.processorSeconds;
    arguments["memory_bytes"] = command.usage.peakMemory;
    event["args"] = std::move(arguments);
    return event;
}

/// How many commands run, wherever that changes.
void addCounters(Json& trace, const RunRecord& run) {
    std::map<events::Time, int> changes;
    for (const CommandRecord& command : run.commands) {
        ++changes[command.began];
        --changes[command.ended];
    }
    int running = 0;
    for (const auto& [at, change] : changes) {
        running += change;
        trace.push_back({{"name", "commands running"},
                         {"ph", "C"},
                         {"ts", at.count()},
                         {"pid", kProcess},
                         {"args", {{"commands", running}}}});
    }
}

void addNames(Json& trace, const RunRecord& run) {
    unsigned lanes = 0;
    for (const CommandRecord& command : run.commands) {
        lanes = std::max(lanes, laneOf(command));
    }
    trace.push_back(metadata("process_name", kOwnLane, {{"name", "vesk " + run.about.version}}));
    for (unsigned lane = 0; lane <= lanes; ++lane) {
        const std::string name =
            lane == kOwnLane ? "vesk" : std::string("worker ").append(std::to_string(lane));
        trace.push_back(metadata("thread_name", lane, {{"name", name}}));
        trace.push_back(metadata("thread_sort_index", lane, {{"sort_index", lane}}));
    }
}

}  // namespace

std::string traceOf(const RunRecord& run) {
    std::vector<std::pair<Stretch, Json>> stretches;
    for (const ActivityRecord& activity : run.activities) {
        stretches.emplace_back(activity, eventOf(activity));
    }
    for (const VisitRecord& visit : run.visits) {
        stretches.emplace_back(visit, eventOf(visit));
    }
    for (const CommandRecord& command : run.commands) {
        stretches.emplace_back(command, eventOf(command, run.visits[command.visit]));
    }
    // What is around something else comes before it.
    std::ranges::stable_sort(stretches, [](const auto& a, const auto& b) {
        return std::pair(a.first.began, b.first.ended) < std::pair(b.first.began, a.first.ended);
    });
    Json trace = Json::array();
    addNames(trace, run);
    for (auto& [stretch, event] : stretches) {
        trace.push_back(std::move(event));
    }
    addCounters(trace, run);
    Json other{{"outcome", nameOf(run.outcome)}, {"directory", run.about.directory}};
    if (run.repeated) {
        other["repeated"] = "nothing has changed since an earlier run, which was repeated";
    }
    const Json whole{{"traceEvents", std::move(trace)},
                     {"displayTimeUnit", "ms"},
                     {"otherData", std::move(other)}};
    return textOf(whole) + "\n";
}

}  // namespace Vesk::report
