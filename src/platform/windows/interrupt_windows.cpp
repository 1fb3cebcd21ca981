#include "platform/interrupt.h"

#include <atomic>
#include <csignal>
#include <windows.h>

#include "platform/windows/console_interrupt.h"

namespace Vesk::platform {

namespace {

// Of a Ctrl-C that is known of only because a command has ended with it.
constexpr int kAnnounced = -SIGINT;

std::atomic<int> requestedSignal{0};

/// Runs on a thread of its own. The children are on our console and get the event themselves; the
/// job that they share with us (see process_windows.cpp) ends with us.
BOOL WINAPI onControlEvent(DWORD event) {
    const bool fromKeyboard = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    const int signal = fromKeyboard ? SIGINT : SIGTERM;
    int earlier = 0;
    const bool isFirst =
        requestedSignal.compare_exchange_strong(earlier, signal) ||
        (earlier == kAnnounced && requestedSignal.compare_exchange_strong(earlier, signal));
    if (!isFirst) {
        ::TerminateProcess(::GetCurrentProcess(), kEndedByControlC);
    }
    if (!fromKeyboard) {
        // The window closes or the session ends: the system ends us as soon as this returns, or
        // after some seconds. The main thread saves its results in that time.
        ::Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

void installInterruptHandler() {
    ::SetConsoleCtrlHandler(onControlEvent, TRUE);
}

void noteExitCode(DWORD code) noexcept {
    int none = 0;
    if (code == kEndedByControlC) {
        requestedSignal.compare_exchange_strong(none, kAnnounced);
    }
}

int interruptSignal() noexcept {
    const int signal = requestedSignal;
    return signal == kAnnounced ? SIGINT : signal;
}

}  // namespace Vesk::platform
