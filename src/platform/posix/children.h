// The running children, as far as a signal handler must know them.
#pragma once

#include <atomic>
#include <sys/types.h>

namespace Vesk::platform {

/// Whether every new child gets a process group of its own (see interrupt.h).
bool childrenHaveOwnGroups() noexcept;

/// A place among the running children. Taken before the child is started, so that no child ever
/// runs that an interruption cannot reach; waits when an absurd number is running already.
class RunningChild {
  public:
    RunningChild();
    ~RunningChild() { forget(); }
    RunningChild(const RunningChild&) = delete;
    RunningChild& operator=(const RunningChild&) = delete;

    /// The child runs, in a process group of its own or in ours. If an interruption came in the
    /// meantime it is handed on here.
    void started(pid_t child, bool ownGroup) noexcept;

    /// From here on no signal is sent to the child. Call when it has ended but is not yet reaped:
    /// its number still belongs to it then, and cannot hit anybody else.
    void forget() noexcept;

  private:
    std::atomic<pid_t>* slot_ = nullptr;
};

}  // namespace Vesk::platform
