// Options that a project's profile has for every build.
#pragma once

#include "app/settings.h"
#include "project/project.h"
#include "types/context/context.h"

namespace Vesk {

/// The variable of a profile that holds them.
inline constexpr const char* kProjectOptions = "OPTIONS";

/// Adds the options of the project's profiles to the settings. An option that the command line or
/// the environment gives stands. Throws VeskException, with the place, for what is not an option
/// and for one that a project cannot give.
void applyProjectOptions(Settings& settings, const Project& project, const Context& builtins);

}  // namespace Vesk
