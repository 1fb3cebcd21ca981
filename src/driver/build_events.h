// Telling others how a build goes while it goes.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Vesk {

/// How a target ended that did not fail.
enum class TargetEnd : std::uint8_t {
    Ran,       ///< some of its commands have run; in a dry run: would
    UpToDate,  ///< none had to
    NotBegun,  ///< the build stopped before
};

/// Called on the driver's thread, or on one that it waits for. Targets are named as "unit::target".
/// What is of no interest need not be overridden.
class BuildEvents {
  public:
    virtual ~BuildEvents() = default;

    /// A step of a target has failed. `said`: lines that it wrote, as far as they were collected,
    /// and why it failed. May come more than once for a target.
    virtual void failed(const std::string& /*target*/, const std::string& /*said*/) {}

    /// A target has failed for a reason that was reported for another one.
    virtual void failedLike(const std::string& /*other*/, const std::string& /*target*/) {}

    /// A target is not built because one that it needs is not.
    virtual void skipped(const std::string& /*target*/, const std::string& /*needed*/) {}

    /// A target with recipes has come to its end.
    virtual void ended(const std::string& /*target*/, TargetEnd /*end*/) {}

    /// So many steps more are to be expected: what may have to run, and targets still to build.
    virtual void expected(std::size_t /*steps*/) {}

    /// So many of those are none: up to date, visited, or not to be run any more.
    virtual void dropped(std::size_t /*steps*/) {}

    /// Of the expected steps, some of a target run now; have come to their end.
    virtual void stepsBegan(const std::string& /*target*/, std::size_t /*steps*/) {}
    virtual void stepsEnded(const std::string& /*target*/, std::size_t /*steps*/) {}

    /// The thread is going to wait for steps, at most so long. Returns how long it may.
    virtual std::chrono::milliseconds beforeWaiting(std::chrono::milliseconds longest) {
        return longest;
    }
};

/// Events that are not reported to anybody.
BuildEvents& noEvents() noexcept;

}  // namespace Vesk
