// Events as lines of JSON, see docs/see-the-build.md.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "events/events.h"

namespace Vesk::report {

/// The version of the lines. A higher one has other meanings; fields may be added without.
inline constexpr int kEventsVersion = 1;

/// One line, with its end.
std::string eventLine(events::Time at, const events::Event& event);

/// "built", "fresh", "group", "failed", "skipped", "not begun".
const char* nameOf(events::Outcome outcome) noexcept;

/// "done", "failed", "interrupted".
const char* nameOf(events::RunOutcome outcome) noexcept;

/// Where bytes go, and what went wrong if something did.
class ByteSink {
  public:
    virtual ~ByteSink() = default;
    virtual void write(std::string_view bytes) noexcept = 0;
};

/// Writes the events of a run. Whoever follows them sees everything that has happened whenever vesk
/// waits for a command.
class EventWriter : public events::Listener {
  public:
    /// `sink` outlives it; may be null for one that is told of nothing.
    explicit EventWriter(ByteSink* sink) : sink_(sink) {}

    void take(events::Time at, const events::Event& event) noexcept override;

    /// Writes what is still kept back.
    void flush() noexcept;

  private:
    ByteSink* sink_;
    std::string waiting_;
};

}  // namespace Vesk::report
