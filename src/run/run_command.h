// Running one command.
#pragma once

#include <cstdint>
#include <string>

#include "run/recipe.h"

namespace Vesk {

/// Echoes the command text (level 5), runs it and waits for its end without a limit. Returns the
/// child's exit code (on POSIX 128+N for one that signal N killed), or the system's error code when
/// the child could not be started; `startFailure`, when given, then gets a sentence for the user.
/// It stays empty when the child ran to its end. Thread-safe; throws nothing of its own.
std::int32_t runCommand(const Command& command, std::string* startFailure = nullptr);

}  // namespace Vesk
