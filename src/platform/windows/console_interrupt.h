// What the end of a command tells about the console.
#pragma once

#include <windows.h>

namespace Vesk::platform {

/// The exit code of a process that Ctrl-C has ended.
inline constexpr DWORD kEndedByControlC = 0xC000013A;

/// A command has ended with this code. The system tells each process of a console of Ctrl-C on its
/// own, in no certain order: a command may have ended before we know why. It counts as asked then,
/// and the event that is still on its way is not taken for a second one.
void noteExitCode(DWORD code) noexcept;

}  // namespace Vesk::platform
