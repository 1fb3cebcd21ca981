// The visits of earlier runs, as a build uses them (see driver/visit_memory.h).
#pragma once

#include <filesystem>

#include "app/request.h"
#include "app/settings.h"
#include "base/content_hash.h"
#include "driver/visit_memory.h"
#include "keep/visit_store.h"
#include "platform/recorder.h"
#include "project/registry.h"

namespace Vesk {

/// What a user says about kept visits: "no" or "check".
inline constexpr const char* kKeepVariable = "VESK_KEEP";

/// What the run does with them, by the environment, the settings and the console.
VisitKeeping visitKeeping(const Settings& settings);

/// Of what the visits of a run depend on, whatever their project is. `asked`: while its tools were
/// made.
ContentHash surroundingsOfRun(const Registry& registry, const Context& builtins,
                              const Request& request, const platform::Questions& asked);

/// The same with what is the project's own.
ContentHash surroundingsIn(const Project& project, const ContentHash& run);

/// Loads the store of a project's directory; not to be recorded.
void loadVisits(VisitStore& store, const std::filesystem::path& directory);

/// Saves it where there is a cache, which has been saved before.
void saveVisits(VisitStore& store, const std::filesystem::path& directory);

}  // namespace Vesk
