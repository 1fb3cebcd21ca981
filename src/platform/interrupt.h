// Ctrl-C and termination requests.
//
// The first request is remembered and handed on to every running child; the program then ends in
// an orderly way. A second one kills the children and ends the process at once. No child is started
// after the first request.
//
// On POSIX a child has a process group of its own, to which requests are handed, so that they reach
// what the child started in turn. Only when standard input is a terminal do the children stay in
// our group: they may read from it, and the terminal itself sends them its Ctrl-C. On Windows the
// console tells them.
#pragma once

namespace Vesk::platform {

/// Installs the handlers for SIGINT, SIGTERM and SIGHUP (one that is ignored stays ignored: nohup
/// and scripts with jobs in the background mean it), on Windows for the console's control events.
/// Call once, early, on the main thread.
void installInterruptHandler();

/// The number of the signal that asked us to end (SIGINT for Ctrl-C), 0 when nobody did.
int interruptSignal() noexcept;

}  // namespace Vesk::platform
