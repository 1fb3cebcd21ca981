// Telling those who want to see a run what happens in it.
//
// Code that does something worth seeing emits events; it costs a look at one variable when nobody
// listens. All functions may be called from any thread.
#pragma once

#include <chrono>
#include <string_view>
#include <vector>

#include "events/event.h"

namespace Vesk::events {

class Listener {
  public:
    virtual ~Listener() = default;

    /// Called for one event at a time, in the order of their times, on the thread that emits it.
    /// Must not emit, and throws nothing.
    virtual void take(Time at, const Event& event) noexcept = 0;
};

/// While it lives, the listeners, which outlive it, are told of all events. Does not nest.
class Listening {
  public:
    explicit Listening(std::vector<Listener*> listeners);
    ~Listening();
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
};

/// While it lives, nobody is told of anything: for a look at targets that is no part of the build.
class Pause {
  public:
    Pause() noexcept;
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

  private:
    bool before_;
};

/// Ask before putting together what to emit.
bool listened() noexcept;

/// A number that nothing else of the run has; 0 when nobody listens.
Id newId() noexcept;

/// Without effect when nobody listens.
void emit(const Event& event);

/// An activity of the driver's thread.
class Span {
  public:
    Span(Activity activity, std::string_view name);
    ~Span();
    Span(const Span&) = delete;
    Span& operator=(const Span&) = delete;

  private:
    Id id_;
};

/// A lane for a command: the lowest number that no other has. 0 when nobody listens.
class Lane {
  public:
    Lane();
    ~Lane();
    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;

    unsigned number() const noexcept { return number_; }

  private:
    bool taken_;
    unsigned number_ = 0;
};

}  // namespace Vesk::events
