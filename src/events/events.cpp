#include "events/events.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

namespace Vesk::events {
namespace {

using Clock = std::chrono::steady_clock;

/// The whole program starts about when its statics do.
const Clock::time_point kBegan = Clock::now();

std::atomic<bool> active = false;
std::atomic<Id> lastId = 0;

/// What is guarded by the mutex.
struct Shared {
    std::mutex mutex;
    std::vector<Listener*> listeners;
    std::vector<bool> lanes;  ///< which ones are taken
};

Shared& shared() {
    static Shared instance;
    return instance;
}

}  // namespace

Listening::Listening(std::vector<Listener*> listeners) {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.listeners = std::move(listeners);
    active = !state.listeners.empty();
}

Listening::~Listening() {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    active = false;
    state.listeners.clear();
}

Pause::Pause() noexcept : before_(active.exchange(false)) {}

Pause::~Pause() {
    active = before_;
}

bool listened() noexcept {
    return active.load(std::memory_order_relaxed);
}

Id newId() noexcept {
    return listened() ? ++lastId : 0;
}

void emit(const Event& event) {
    if (!listened()) {
        return;
    }
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    const auto at = std::chrono::duration_cast<Time>(Clock::now() - kBegan);
    for (Listener* const listener : state.listeners) {
        listener->take(at, event);
    }
}

Span::Span(Activity activity, std::string_view name) : id_(newId()) {
    if (id_ != 0) {
        emit(ActivityStarted{id_, activity, std::string(name)});
    }
}

Span::~Span() {
    if (id_ != 0) {
        emit(ActivityFinished{id_});
    }
}

Lane::Lane() : taken_(listened()) {
    if (taken_) {
        Shared& state = shared();
        const std::lock_guard lock(state.mutex);
        const auto free = std::ranges::find(state.lanes, false);
        number_ = static_cast<unsigned>(free - state.lanes.begin());
        if (free == state.lanes.end()) {
            state.lanes.push_back(true);
        } else {
            *free = true;
        }
    }
}

Lane::~Lane() {
    if (taken_) {
        Shared& state = shared();
        const std::lock_guard lock(state.mutex);
        state.lanes[number_] = false;
    }
}

}  // namespace Vesk::events
