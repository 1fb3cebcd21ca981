// Showing a run: the files and texts that tell what happened in it.
#pragma once

#include <functional>

#include "app/settings.h"

namespace Vesk {

/// Does the work, and writes what the settings ask for about it, also when the work throws. Returns
/// what the work returns. Throws VeskException, before the work where that can be known, for what
/// cannot be written, and what the work throws.
int runSeen(const Settings& settings, const std::function<int()>& work);

}  // namespace Vesk
