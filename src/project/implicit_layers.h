// What every target of a project sees before its own assignments.
#pragma once

#include <memory>
#include <vector>

#include "project/project.h"
#include "types/context/context.h"

namespace Vesk {

/// Contexts that lie over one another, the lowest first. They are kept apart because a value from a
/// condition belongs to the layer in which the condition is written.
using ImplicitLayers = std::vector<std::shared_ptr<const Context>>;

/// `base` with PROJECT_ROOT, the profile "default", the selected profile, PROFILE with `overrides`.
ImplicitLayers implicitLayers(const Project& project, const Context& base,
                              const Context& overrides);

/// The layers merged into one. Conditions of profiles are taken over, not evaluated. An append
/// stays one while nothing has assigned the variable.
std::shared_ptr<Context> mergedLayers(const ImplicitLayers& layers);

}  // namespace Vesk
