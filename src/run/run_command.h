// Running one command.
#pragma once

#include <cstdint>
#include <string>

#include "events/event.h"
#include "run/recipe.h"

namespace Vesk {

/// For those who want to see the command run.
struct CommandView {
    events::Id id = 0;                  ///< under which its output is told of; 0: it is not
    platform::ProcessUsage usage = {};  ///< is set when it has run
};

/// Echoes the command text (level 5), runs it and waits for its end without a limit. Returns the
/// child's exit code (on POSIX 128+N for one that signal N killed), or the system's error code when
/// the child could not be started; `startFailure`, when given, then gets a sentence for the user.
/// It stays empty when the child ran to its end. Thread-safe; throws nothing of its own.
///
/// While events are listened to, the child's output passes through here, to where it goes
/// otherwise.
std::int32_t runCommand(const Command& command, std::string* startFailure = nullptr,
                        CommandView* view = nullptr);

}  // namespace Vesk
