// All that a build works with.
#pragma once

#include <memory>
#include <optional>

#include "app/project_caches.h"
#include "app/request.h"
#include "app/settings.h"
#include "app/user_registry.h"
#include "base/content_hash.h"
#include "driver/build_setting.h"
#include "driver/declared_tools.h"
#include "project/project_catalog.h"
#include "tools/toolbox.h"

namespace Vesk {

struct Session {
    Settings settings;  ///< with the options of the project
    Request request;
    Toolbox staticTools;
    std::unique_ptr<UserRegistry> registry;
    std::shared_ptr<Context> builtins;
    std::optional<DeclaredTools> declaredTools;  ///< nothing until they are needed
    ProjectCatalog catalog;
    ProjectCaches caches;
    std::optional<ContentHash> surroundings;  ///< of its visits; nothing: they cannot be kept
};

/// Takes all steps of the set-up, from the registry to the caches, which it locks unless the build
/// is a dry run. Throws what is wrong with any of it. Targets that `outlines`, if it is not null,
/// knows are parsed only when their text is needed; it must outlive the session. `surroundings`, if
/// they are known: of the visits. Then the registry and its tools are made when they are needed.
Session openSession(const Settings& given, UnitOutlines* outlines = nullptr,
                    const std::optional<ContentHash>& surroundings = std::nullopt);

/// What a driver needs of it. Both outlive the driver.
BuildSetting buildSetting(const Settings& settings, Session& session);

/// The catalog of the workspace's projects, with the project that the run works on in front. The
/// workspace's store moves into it. Throws what the catalog throws.
ProjectCatalog makeCatalog(Workspace& workspace, const Context& builtins, const Request& request);

}  // namespace Vesk
