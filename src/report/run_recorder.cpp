#include "report/run_recorder.h"

#include <algorithm>
#include <new>

namespace Vesk::report {

using events::Time;

/// Without memory for it the record has a gap; the build goes on.
void RunRecorder::take(Time at, const events::Event& event) noexcept {
    try {
        std::visit([&](const auto& each) { add(at, each); }, event);
    } catch (const std::bad_alloc&) {
        outputs_ = kMostOutputs;
    }
}

VisitRecord* RunRecorder::visit(events::Id id) {
    const auto place = places_.find(id);
    return place == places_.end() ? nullptr : &record_.visits[place->second];
}

CommandRecord* RunRecorder::command(events::Id id) {
    const auto place = places_.find(id);
    return place == places_.end() ? nullptr : &record_.commands[place->second];
}

void RunRecorder::add(Time /*at*/, const events::RunStarted& event) {
    record_.about = event;
}

void RunRecorder::add(Time at, const events::ActivityStarted& event) {
    places_.emplace(event.id, record_.activities.size());
    record_.activities.push_back({{at, Time::max()}, event.activity, event.name});
}

void RunRecorder::add(Time at, const events::ActivityFinished& event) {
    if (const auto place = places_.find(event.id); place != places_.end()) {
        record_.activities[place->second].ended = at;
    }
}

void RunRecorder::add(Time at, const events::VisitStarted& event) {
    places_.emplace(event.subject.visit, record_.visits.size());
    VisitRecord& visit = record_.visits.emplace_back();
    visit.began = at;
    visit.ended = Time::max();
    visit.about = event;
}

void RunRecorder::add(Time at, const events::VisitFinished& event) {
    if (VisitRecord* const left = visit(event.visit)) {
        left->ended = at;
        left->tool = event.tool;
        left->kept = event.kept;
    }
}

void RunRecorder::add(Time /*at*/, const events::Needed& event) {
    VisitRecord* const by = visit(event.by);
    const auto needed = places_.find(event.visit);
    // A visit that is made after all asks for the same ones again.
    if (by != nullptr && needed != places_.end() &&
        std::ranges::find(by->needs, needed->second) == by->needs.end()) {
        by->needs.push_back(needed->second);
    }
}

void RunRecorder::add(Time /*at*/, const events::ReasonFound& event) {
    if (VisitRecord* const built = visit(event.subject.visit)) {
        built->reasons.push_back(event);
    }
}

void RunRecorder::add(Time at, const events::CommandStarted& event) {
    VisitRecord* const owner = visit(event.subject.visit);
    if (owner == nullptr) {
        return;
    }
    places_.emplace(event.id, record_.commands.size());
    owner->commands.push_back(record_.commands.size());
    CommandRecord& command = record_.commands.emplace_back();
    command.began = at;
    command.ended = Time::max();
    command.visit = places_.at(event.subject.visit);
    command.step = event.step;
    command.stage = event.stage;
    command.lane = event.lane;
    command.command = event.command;
    command.makes = event.makes;
}

void RunRecorder::add(Time /*at*/, const events::Output& event) {
    CommandRecord* const writer = command(event.command);
    if (writer != nullptr && outputs_ < kMostOutputs) {
        const std::size_t room = kMostOutput - std::min(kMostOutput, writer->output.size());
        writer->output.append(event.text, 0, room);
        outputs_ += std::min(room, event.text.size());
    }
}

void RunRecorder::add(Time at, const events::CommandFinished& event) {
    if (CommandRecord* const ran = command(event.id)) {
        ran->ended = at;
        ran->status = event.status;
        ran->usage = event.usage;
        ran->finished = true;
    }
}

void RunRecorder::add(Time /*at*/, const events::TargetFinished& event) {
    VisitRecord* const target = visit(event.subject.visit);
    if (target == nullptr || target->outcome == events::Outcome::Failed) {
        return;
    }
    target->outcome = event.outcome;
    target->said = event.said;
    target->keptSteps = event.keptSteps;
    target->keptSeconds = event.keptSeconds;
}

void RunRecorder::add(Time /*at*/, const events::RunRepeated& /*event*/) {
    record_.repeated = true;
}

void RunRecorder::add(Time at, const events::RunFinished& event) {
    record_.outcome = event.outcome;
    record_.ended = at;
    // What a failure has cut short ends with the run.
    const auto close = [at](Stretch& stretch) { stretch.ended = std::min(stretch.ended, at); };
    std::ranges::for_each(record_.visits, close);
    std::ranges::for_each(record_.commands, close);
    std::ranges::for_each(record_.activities, close);
}

}  // namespace Vesk::report
