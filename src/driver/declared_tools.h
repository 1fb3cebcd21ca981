// The tools of a run.
#pragma once

#include <functional>
#include <unordered_map>
#include <vector>

#include "project/implicit_layers.h"
#include "project/project.h"
#include "project/registry.h"
#include "tools/toolbox.h"
#include "types/context/context.h"

namespace Vesk {

/// For each project the tools that it may use and that somebody declared: those of the registry,
/// then, over them, its own. Conditional blocks in declarations are evaluated with what the
/// project's targets see: builtin variables, profiles, the command line.
class DeclaredTools {
  public:
    using LayersOf = std::function<ImplicitLayers(const Project&)>;

    /// A registry tool that cannot be made is warned about and left out: once, or for each project
    /// when it has conditions. Throws VeskException for a condition of a project's tool that cannot
    /// be evaluated.
    DeclaredTools(const Registry& registry, const std::vector<const Project*>& projects,
                  const LayersOf& layersOf);

    /// The toolbox of one of the projects that were given.
    const Toolbox& of(const Project& project) const { return toolboxes_.at(&project); }

  private:
    std::unordered_map<const Project*, Toolbox> toolboxes_;
};

}  // namespace Vesk
