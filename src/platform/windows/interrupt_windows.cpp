#include "platform/interrupt.h"

#include <atomic>
#include <csignal>
#include <windows.h>

namespace Vesk::platform {

namespace {

std::atomic<int> requestedSignal{0};

/// Runs on a thread of its own. The children are on our console and get the event themselves; the
/// job that they share with us (see process_windows.cpp) ends with us.
BOOL WINAPI onControlEvent(DWORD event) {
    const bool fromKeyboard = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    const int signal = fromKeyboard ? SIGINT : SIGTERM;
    int none = 0;
    if (!requestedSignal.compare_exchange_strong(none, signal)) {
        constexpr UINT kEndedByControlC = 0xC000013A;
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

int interruptSignal() noexcept {
    return requestedSignal;
}

}  // namespace Vesk::platform
