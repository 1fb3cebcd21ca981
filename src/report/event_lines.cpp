#include "report/event_lines.h"

#include <exception>

#include "report/json.h"
#include "report/run_record.h"

namespace Vesk::report {
namespace {

/// So much is kept back while nothing is worth a look.
constexpr std::size_t kFlushAt = std::size_t{32} * 1024;

Json started(const char* what, events::Time at) {
    return {{"event", "started"}, {"what", what}, {"time", seconds(at)}};
}

Json finished(const char* what, events::Time at) {
    return {{"event", "finished"}, {"what", what}, {"time", seconds(at)}};
}

Json jsonOf(events::Time at, const events::RunStarted& event) {
    Json json = started("run", at);
    json["version"] = kEventsVersion;
    json["vesk"] = event.version;
    json["directory"] = event.directory;
    json["jobs"] = event.jobs;
    json["dry_run"] = event.dryRun;
    return json;
}

Json jsonOf(events::Time at, const events::ActivityStarted& event) {
    Json json = started(event.activity == events::Activity::Read ? "reading" : "cache", at);
    json["id"] = event.id;
    json["name"] = event.name;
    return json;
}

Json jsonOf(events::Time at, const events::ActivityFinished& event) {
    Json json = finished("activity", at);
    json["id"] = event.id;
    return json;
}

Json jsonOf(events::Time at, const events::VisitStarted& event) {
    Json json = started("visit", at);
    json["visit"] = event.subject.visit;
    json["target"] = event.subject.target;
    json["project"] = event.project;
    json["unit"] = event.unit;
    addText(json, "profile", event.profile);
    addText(json, "arguments", event.arguments);
    json["place"] = event.place;
    return json;
}

Json jsonOf(events::Time at, const events::VisitFinished& event) {
    Json json = finished("visit", at);
    json["visit"] = event.visit;
    addText(json, "tool", event.tool);
    json["kept"] = event.kept;
    return json;
}

Json jsonOf(events::Time at, const events::Needed& event) {
    return {{"event", "needed"}, {"time", seconds(at)}, {"by", event.by}, {"visit", event.visit}};
}

Json jsonOf(events::Time at, const events::ReasonFound& event) {
    Json json{{"event", "reason"},
              {"time", seconds(at)},
              {"visit", event.subject.visit},
              {"target", event.subject.target},
              {"text", event.text}};
    addText(json, "file", event.file);
    addText(json, "name", event.name);
    addText(json, "before", event.before);
    addText(json, "now", event.now);
    return json;
}

Json jsonOf(events::Time at, const events::CommandStarted& event) {
    Json json = started("command", at);
    json["id"] = event.id;
    json["visit"] = event.subject.visit;
    json["target"] = event.subject.target;
    json["step"] = event.step;
    json["stage"] = event.stage;
    json["lane"] = event.lane;
    json["command"] = event.command;
    addText(json, "makes", event.makes);
    return json;
}

Json jsonOf(events::Time at, const events::Output& event) {
    return {{"event", "output"},
            {"time", seconds(at)},
            {"id", event.command},
            {"stream", event.stream == platform::Stream::Output ? "output" : "error"},
            {"text", event.text}};
}

Json jsonOf(events::Time at, const events::CommandFinished& event) {
    Json json = finished("command", at);
    json["id"] = event.id;
    json["status"] = event.status;
    json["processor_seconds"] = event.usage.processorSeconds;
    json["memory_bytes"] = event.usage.peakMemory;
    return json;
}

Json jsonOf(events::Time at, const events::TargetFinished& event) {
    Json json = finished("target", at);
    json["visit"] = event.subject.visit;
    json["target"] = event.subject.target;
    json["outcome"] = nameOf(event.outcome);
    addText(json, "said", event.said);
    json["kept_commands"] = event.keptSteps;
    json["kept_seconds"] = event.keptSeconds;
    return json;
}

Json jsonOf(events::Time at, const events::RunRepeated& /*event*/) {
    return {{"event", "repeated"}, {"time", seconds(at)}};
}

Json jsonOf(events::Time at, const events::RunFinished& event) {
    Json json = finished("run", at);
    json["outcome"] = nameOf(event.outcome);
    return json;
}

/// Whether somebody may be waiting for it, or a wait of vesk's own begins.
bool isNews(const events::Event& event) noexcept {
    return std::holds_alternative<events::CommandStarted>(event) ||
           std::holds_alternative<events::CommandFinished>(event) ||
           std::holds_alternative<events::Output>(event) ||
           std::holds_alternative<events::RunStarted>(event) ||
           std::holds_alternative<events::RunFinished>(event);
}

}  // namespace

const char* nameOf(events::Outcome outcome) noexcept {
    switch (outcome) {
        case events::Outcome::Built:
            return "built";
        case events::Outcome::Fresh:
            return "fresh";
        case events::Outcome::Group:
            return "group";
        case events::Outcome::Failed:
            return "failed";
        case events::Outcome::Skipped:
            return "skipped";
        case events::Outcome::NotBegun:
            break;
    }
    return "not begun";
}

const char* nameOf(events::RunOutcome outcome) noexcept {
    switch (outcome) {
        case events::RunOutcome::Done:
            return "done";
        case events::RunOutcome::Failed:
            return "failed";
        case events::RunOutcome::Interrupted:
            break;
    }
    return "interrupted";
}

std::string eventLine(events::Time at, const events::Event& event) {
    return textOf(std::visit([at](const auto& each) { return jsonOf(at, each); }, event)) + "\n";
}

/// Without memory for a line it is left out; the build goes on.
void EventWriter::take(events::Time at, const events::Event& event) noexcept {
    try {
        waiting_ += eventLine(at, event);
    } catch (const std::exception&) {
        flush();
    }
    if (isNews(event) || waiting_.size() >= kFlushAt) {
        flush();
    }
}

void EventWriter::flush() noexcept {
    if (!waiting_.empty()) {
        sink_->write(waiting_);
        waiting_.clear();
    }
}

}  // namespace Vesk::report
