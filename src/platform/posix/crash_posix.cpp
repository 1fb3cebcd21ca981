#include "platform/crash.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <execinfo.h>

#include "platform/crash_report.h"

namespace Vesk::platform {

namespace {

struct Fault {
    int signal;
    const char* name;
};

constexpr std::array kFaults{Fault{SIGSEGV, "SIGSEGV"}, Fault{SIGBUS, "SIGBUS"},
                             Fault{SIGFPE, "SIGFPE"}, Fault{SIGILL, "SIGILL"},
                             Fault{SIGABRT, "SIGABRT"}};

const char* nameOf(int signal) noexcept {
    for (const Fault& fault : kFaults) {
        if (fault.signal == signal) {
            return fault.name;
        }
    }
    return "?";
}

extern "C" void onFault(int signal, siginfo_t* info, void* /*context*/) {
    CrashLine line;
    line.text("Exception caught! Signal ").decimal(static_cast<unsigned>(signal));
    line.text(" (").text(nameOf(signal)).text(")").write();
    if (signal == SIGSEGV) {
        line.text("ACCESS VIOLATION at address: ").address(info->si_addr).write();
    }
    std::array<void*, kMaxStackFrames> frames{};
    const int count = ::backtrace(frames.data(), kMaxStackFrames);
    writeStackTrace(frames.data(), static_cast<unsigned>(count));
    // SA_RESETHAND has put the default action back: dying of the signal itself tells the caller.
    std::raise(signal);
}

}  // namespace

void installCrashHandler() {
    // The first call loads a library, which must not happen inside the handler.
    void* primer = nullptr;
    ::backtrace(&primer, 1);

    // A stack of its own lets the handler report that the normal one overflowed. Static: it has to
    // outlive everything.
    constexpr std::size_t kStackSize = 64UL * 1024;
    alignas(16) static std::array<char, kStackSize> alternateStack;
    stack_t stack{};
    stack.ss_sp = alternateStack.data();
    stack.ss_size = alternateStack.size();
    ::sigaltstack(&stack, nullptr);

    struct sigaction action {};
    action.sa_sigaction = onFault;
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | SA_RESETHAND);
    ::sigemptyset(&action.sa_mask);
    for (const Fault& fault : kFaults) {
        ::sigaction(fault.signal, &action, nullptr);
    }
}

}  // namespace Vesk::platform
