// What the command line says about a project.
#pragma once

#include <memory>

#include "app/positionals.h"
#include "app/settings.h"
#include "app/user_registry.h"
#include "app/workspace.h"
#include "types/context/context.h"

namespace Vesk {

struct Request {
    Positionals words;
    std::shared_ptr<Context> assignments;

    /// What the assignments put over every target. The target that they describe with -c has those
    /// that append already, and must not get them twice.
    std::shared_ptr<Context> overrides;
};

/// Sorts the words, and loads the imports of the project under the profile that they select. Throws
/// what these throw.
Positionals selectProfile(const Settings& settings, const Workspace& workspace,
                          const UserRegistry& registry);

/// Reads the assignments among the words. Reports a second target. Throws what parsing throws.
Request readRequest(const Settings& settings, Workspace& workspace, Positionals words);

}  // namespace Vesk
