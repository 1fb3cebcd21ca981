#include "report/stats.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <fmt/format.h>
#include <set>
#include <string_view>

#include "base/text.h"
#include "report/analysis.h"
#include "report/event_lines.h"
#include "report/json.h"

namespace Vesk::report {
namespace {

constexpr std::size_t kMostShown = 5;
constexpr std::size_t kMostListed = 20;
constexpr std::size_t kMostWarnings = 1000;
constexpr double kPercent = 100;

/// Lines with a name before each; one without has the name of that above.
class Lines {
  public:
    void add(std::string_view name, std::string_view text) {
        lines_.push_back(fmt::format("{:<15} {}", name, text));
    }

    std::vector<std::string> taken() { return std::move(lines_); }

  private:
    std::vector<std::string> lines_;
};

void addOptional(std::string& text, std::size_t count, std::string_view what) {
    if (count != 0) {
        text += fmt::format(", {} {}", count, what);
    }
}

std::string requestOf(const RunRecord& run) {
    if (run.visits.empty()) {
        return run.repeated ? "as an earlier run, which was repeated" : "nothing was visited";
    }
    const VisitRecord& request = run.visits.front();
    std::string text = request.name();
    if (!request.about.profile.empty()) {
        text += ", profile " + request.about.profile;
    }
    return text + fmt::format(", -j{}", run.about.jobs);
}

std::string targetsIn(const RunRecord& run, const Totals& totals) {
    std::string text = fmt::format("{} {}, {} up to date", totals.built,
                                   run.about.dryRun ? "to build" : "built", totals.fresh);
    addOptional(text, totals.failed, "failed");
    addOptional(text, totals.skipped, "skipped");
    addOptional(text, totals.notBegun, "not begun");
    return text;
}

std::string keptIn(const Totals& totals) {
    std::string text =
        counted(totals.keptVisits, "visit") + ", " + counted(totals.keptSteps, "command");
    if (totals.keptTime > 0) {
        text += fmt::format(", which saved {} of commands", durationText(totals.keptTime));
    }
    return text;
}

std::string percentOf(double part, double whole) {
    return fmt::format("{:.0f} %", whole > 0 ? part / whole * kPercent : 0);
}

void addCommands(Lines& lines, const RunRecord& run, const Totals& totals) {
    std::string text = fmt::format("{} ran", run.commands.size());
    addOptional(text, totals.failedCommands, "failed");
    lines.add("Commands", text + fmt::format(", {} in all, {} of processor time",
                                             durationText(totals.commandTime),
                                             durationText(totals.processorTime)));
    if (totals.running > 0) {
        lines.add("At once", fmt::format("{:.1f} on average, {} at most",
                                         totals.commandTime / totals.running, totals.mostAtOnce));
    }
    if (const std::size_t number = largest(run); number < run.commands.size()) {
        lines.add("Most memory",
                  fmt::format("{}  {}", bytesText(run.commands[number].usage.peakMemory),
                              labelOf(run, number)));
    }
}

void addPath(Lines& lines, const RunRecord& run) {
    std::vector<std::size_t> path = criticalPath(run);
    double length = 0;
    for (const std::size_t number : path) {
        length += seconds(run.commands[number].length());
    }
    lines.add("Critical path",
              fmt::format("{} in {}, {} of the run", durationText(length),
                          counted(path.size(), "command"), percentOf(length, seconds(run.ended))));
    std::ranges::stable_sort(path, [&run](std::size_t a, std::size_t b) {
        return run.commands[a].length() > run.commands[b].length();
    });
    path.resize(std::min<std::size_t>(path.size(), 3));
    for (const std::size_t number : path) {
        lines.add("", fmt::format("{:>8}  {}", durationText(seconds(run.commands[number].length())),
                                  labelOf(run, number)));
    }
}

void addSlowest(Lines& lines, const RunRecord& run) {
    std::string_view name = "Slowest";
    for (const std::size_t number : slowest(run, kMostShown)) {
        lines.add(name,
                  fmt::format("{:>8}  {}", durationText(seconds(run.commands[number].length())),
                              labelOf(run, number)));
        name = {};
    }
}

void addWarnings(Lines& lines, const RunRecord& run) {
    const std::vector<Warning> warnings = warningsOf(run, kMostWarnings);
    std::set<std::size_t> visits;
    for (const Warning& warning : warnings) {
        visits.insert(run.commands[warning.command].visit);
    }
    if (!warnings.empty()) {
        lines.add("Warnings", fmt::format("{} of {}", counted(warnings.size(), "line"),
                                          counted(visits.size(), "target")));
    }
}

void addEarlier(Lines& lines, const RunRecord& run, const std::vector<PastRun>& earlier) {
    const PastRun now = summaryOf(run, 0);
    if (const PastRun* const last = lastLike(now, earlier)) {
        lines.add("The run before",
                  fmt::format("{}, {} built, {} up to date", durationText(last->seconds),
                              last->built, last->fresh));
    }
}

/// Cut between two letters.
std::string beginningOf(const std::string& command) {
    constexpr std::size_t kMost = 60;
    if (command.size() <= kMost) {
        return command;
    }
    std::size_t size = kMost;
    while (size > 0 && (static_cast<unsigned char>(command[size]) & 0xC0) == 0x80) {
        --size;
    }
    return command.substr(0, size) + "...";
}

Json commandJson(const RunRecord& run, std::size_t number) {
    const CommandRecord& command = run.commands[number];
    Json json{{"target", run.visits[command.visit].name()}};
    addText(json, "makes", command.makes);
    json["began"] = seconds(command.began);
    json["seconds"] = seconds(command.length());
    json["processor_seconds"] = command.usage.processorSeconds;
    json["memory_bytes"] = command.usage.peakMemory;
    json["status"] = command.finished ? Json(command.status) : Json();
    return json;
}

Json commandsJson(const RunRecord& run, const std::vector<std::size_t>& numbers) {
    Json list = Json::array();
    for (const std::size_t number : numbers) {
        list.push_back(commandJson(run, number));
    }
    return list;
}

Json warningsJson(const RunRecord& run) {
    Json list = Json::array();
    for (const Warning& warning : warningsOf(run, kMostWarnings)) {
        list.push_back({{"target", run.visits[run.commands[warning.command].visit].name()},
                        {"text", warning.text}});
    }
    return list;
}

Json runJson(const RunRecord& run) {
    Json json{{"vesk", run.about.version},
              {"outcome", nameOf(run.outcome)},
              {"dry_run", run.about.dryRun},
              {"jobs", run.about.jobs},
              {"seconds", seconds(run.ended)}};
    if (!run.visits.empty()) {
        json["target"] = run.visits.front().name();
        addText(json, "profile", run.visits.front().about.profile);
    }
    return json;
}

}  // namespace

std::string durationText(double seconds) {
    constexpr double kMilliseconds = 1000;
    constexpr double kMinute = 60;
    if (seconds < 1) {
        return fmt::format("{:.0f} ms", seconds * kMilliseconds);
    }
    if (seconds < kMinute) {
        return fmt::format("{:.2f} s", seconds);
    }
    return clockText(std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(seconds)));
}

std::string bytesText(std::uint64_t bytes) {
    constexpr double kStep = 1000;
    constexpr std::array kUnits = {"B", "kB", "MB", "GB", "TB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; size >= kStep && unit + 1 < kUnits.size(); ++unit) {
        size /= kStep;
    }
    return fmt::format("{:.{}f} {}", size, unit > 2 ? 1 : 0, kUnits[unit]);
}

std::string fromDirectory(const RunRecord& run, const std::string& path) {
    const std::string& directory = run.about.directory;
    const bool inside = !directory.empty() && path.starts_with(directory) &&
                        path.size() > directory.size() + 1 &&
                        (path[directory.size()] == '/' || path[directory.size()] == '\\');
    return inside ? path.substr(directory.size() + 1) : path;
}

std::string labelOf(const RunRecord& run, std::size_t command) {
    const CommandRecord& record = run.commands[command];
    const std::string& target = run.visits[record.visit].name();
    return target + " " +
           (record.makes.empty() ? beginningOf(record.command) : fromDirectory(run, record.makes));
}

std::vector<std::string> statsLines(const RunRecord& run, const std::vector<PastRun>& earlier) {
    const Totals totals = totalsOf(run);
    Lines lines;
    lines.add("Request", requestOf(run));
    lines.add("Run",
              fmt::format("{} in {}", nameOf(run.outcome), durationText(seconds(run.ended))));
    lines.add("Targets", targetsIn(run, totals));
    lines.add("Kept", keptIn(totals));
    if (!run.commands.empty()) {
        addCommands(lines, run, totals);
    }
    lines.add("Vesk itself", fmt::format("{} reading, {} in the cache",
                                         durationText(totals.reading), durationText(totals.cache)));
    if (!run.commands.empty()) {
        addPath(lines, run);
        addSlowest(lines, run);
    }
    addWarnings(lines, run);
    addEarlier(lines, run, earlier);
    return lines.taken();
}

std::string statsJson(const RunRecord& run, const std::vector<PastRun>& earlier) {
    const Totals totals = totalsOf(run);
    Json json{{"version", 1}, {"run", runJson(run)}};
    json["targets"] = {{"built", totals.built},     {"fresh", totals.fresh},
                       {"groups", totals.groups},   {"failed", totals.failed},
                       {"skipped", totals.skipped}, {"not_begun", totals.notBegun}};
    json["kept"] = {{"visits", totals.keptVisits},
                    {"commands", totals.keptSteps},
                    {"seconds", totals.keptTime}};
    json["commands"] = {{"ran", run.commands.size()},
                        {"failed", totals.failedCommands},
                        {"seconds", totals.commandTime},
                        {"processor_seconds", totals.processorTime},
                        {"while_any_ran_seconds", totals.running},
                        {"most_at_once", totals.mostAtOnce}};
    json["reading_seconds"] = totals.reading;
    json["cache_seconds"] = totals.cache;
    json["critical_path"] = commandsJson(run, criticalPath(run));
    json["slowest"] = commandsJson(run, slowest(run, kMostListed));
    json["warnings"] = warningsJson(run);
    json["earlier"] = Json::parse(historyText(earlier)).at("runs");
    return textOf(json) + "\n";
}

}  // namespace Vesk::report
