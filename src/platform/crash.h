// Last words of a process that crashes.
#pragma once

namespace Vesk::platform {

/// Installs the handler for faults of the processor: on Windows the unhandled-exception filter, on
/// POSIX handlers for SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT on a stack of their own. It
/// writes what happened and a back trace to standard error and lets the process die of it.
void installCrashHandler();

/// The most frames a back trace shows.
inline constexpr int kMaxStackFrames = 62;

}  // namespace Vesk::platform
