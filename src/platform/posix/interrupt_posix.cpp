#include "platform/interrupt.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <thread>
#include <unistd.h>

#include "platform/posix/children.h"

namespace Vesk::platform {

namespace {

// Values of a slot; any other is the target of kill(2): a process, or minus a process group.
constexpr pid_t kFree = 0;
constexpr pid_t kTaken = 1;  // nobody's child: process 1 is the system's own

constexpr std::size_t kMaxChildren = 4096;
std::array<std::atomic<pid_t>, kMaxChildren> slots;
std::atomic<std::size_t> slotHint{0};

std::atomic<int> requestedSignal{0};
std::atomic<std::int64_t> requestTime{0};
std::atomic<int> walksInProgress{0};

static_assert(std::atomic<pid_t>::is_always_lock_free &&
                  std::atomic<std::int64_t>::is_always_lock_free,
              "the signal handler must not meet a lock");

// timeout(1) and some supervisors signal a process and then its whole group: that is one request.
constexpr std::int64_t kSameRequestNanoseconds = 100'000'000;

std::int64_t nanosecondsNow() noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

void signalChildren(int signal) noexcept {
    ++walksInProgress;
    for (const std::atomic<pid_t>& slot : slots) {
        const pid_t target = slot.load();
        if (target != kFree && target != kTaken) {
            ::kill(target, signal);
        }
    }
    --walksInProgress;
}

extern "C" void onTerminationRequest(int signal) {
    const int savedErrno = errno;
    std::int64_t first = 0;
    const std::int64_t now = nanosecondsNow();
    if (requestTime.compare_exchange_strong(first, now)) {
        requestedSignal = signal;
        signalChildren(signal);
    } else if (now - first >= kSameRequestNanoseconds) {
        signalChildren(SIGKILL);
        ::_exit(128 + signal);
    }
    errno = savedErrno;
}

}  // namespace

void installInterruptHandler() {
    constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
    struct sigaction action {};
    action.sa_handler = onTerminationRequest;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : kSignals) {
        ::sigaddset(&action.sa_mask, signal);
    }
    // Without SA_RESTART, so that whoever waits for a lock notices.
    for (const int signal : kSignals) {
        struct sigaction previous {};
        ::sigaction(signal, nullptr, &previous);
        if (previous.sa_handler != SIG_IGN) {
            ::sigaction(signal, &action, nullptr);
        }
    }
    // A caller that ignores SIGCHLD hands that on, and the system would then drop exit codes.
    std::signal(SIGCHLD, SIG_DFL);
}

int interruptSignal() noexcept {
    return requestedSignal;
}

bool childrenHaveOwnGroups() noexcept {
    static const bool ownGroups = ::isatty(STDIN_FILENO) == 0;
    return ownGroups;
}

RunningChild::RunningChild() {
    for (std::size_t tried = 0; slot_ == nullptr; ++tried) {
        if (tried == kMaxChildren) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            tried = 0;
        }
        std::atomic<pid_t>& slot = slots[slotHint++ % kMaxChildren];
        pid_t expected = kFree;
        if (slot.compare_exchange_strong(expected, kTaken)) {
            slot_ = &slot;
        }
    }
}

void RunningChild::started(pid_t child, bool ownGroup) noexcept {
    const pid_t target = ownGroup ? -child : child;
    // The handler writes the request before it reads the slots, we write the slot before we read
    // the request: one of the two sees the other.
    slot_->store(target);
    if (const int signal = requestedSignal; signal != 0) {
        ::kill(target, signal);
    }
}

void RunningChild::forget() noexcept {
    if (slot_ == nullptr) {
        return;
    }
    slot_->store(kFree);
    slot_ = nullptr;
    // A handler on another thread may have read the number just before.
    while (walksInProgress != 0) {
        std::this_thread::yield();
    }
}

}  // namespace Vesk::platform
