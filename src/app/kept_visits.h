// The visits of earlier runs, as a build uses them (see driver/visit_memory.h).
#pragma once

#include <filesystem>

#include "app/request.h"
#include "app/settings.h"
#include "base/content_hash.h"
#include "driver/visit_memory.h"
#include "grammar/unit_outline.h"
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

/// The outlines of unit files that are kept beside the visits of a project.
class KeptOutlines : public UnitOutlines {
  public:
    KeptOutlines(VisitStore& store, VisitKeeping use);

    std::optional<std::string_view> find(const std::string& file) override;

    /// Throws VeskException where runs are checked and an outline of the same text would have been
    /// wrong.
    void put(const std::string& file, std::string_view outline) override;

  private:
    std::optional<std::string_view> kept(const ContentHash& key);

    VisitStore& store_;
    VisitKeeping use_;
    std::string maker_;  ///< the build of vesk that made an outline stands before it
};

/// Loads the store of a project's directory; not to be recorded.
void loadVisits(VisitStore& store, const std::filesystem::path& directory);

/// Saves it where there is a cache, which has been saved before.
void saveVisits(VisitStore& store, const std::filesystem::path& directory);

}  // namespace Vesk
