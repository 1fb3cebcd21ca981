// Where a build finds projects, units and targets, and what each project's targets see first.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "project/implicit_layers.h"
#include "project/project.h"
#include "project/project_store.h"
#include "types/context/context.h"
#include "types/model/dependency.h"

namespace Vesk {

/// A target and where it belongs. The project is the catalog's.
struct TargetLocation {
    const Project* project = nullptr;
    std::shared_ptr<const Unit> unit;
    std::shared_ptr<const Target> target;
};

/// The loaded projects of a build. One of them is the active page, the one that the command works
/// on.
class ProjectCatalog {
  public:
    /// Takes the store over and puts together for each project what lies under
    /// all of them (`base`: the builtin variables) and over them (`overrides`: the command line's
    /// assignments).
    ProjectCatalog(ProjectStore store, const Context& base, const Context& overrides);

    /// In name order.
    const std::vector<const Project*>& projects() const noexcept { return projects_; }

    /// Turns to another page. Throws NotFoundException for a project that is not the catalog's.
    void setActive(const Project& project);

    /// The active page. Throws VeskException "ProjectCatalog has no active page." before the first
    /// setActive.
    const Project& active() const;

    /// Finds what a reference means that stands in `currentUnit` of `from`. A namespace is the
    /// alias or the name of a project that `from` imports; an empty unit is the current one, or
    /// with a namespace the main unit; "1" is the main unit. Throws NotFoundException of kind
    /// "Project", "Unit" or "Target" with a suggestion where a name is near.
    TargetLocation locate(const DependencyReference& reference, const Project& from,
                          const Unit& currentUnit) const;

    /// The same as seen from the active page's main unit. An empty target is that unit's first;
    /// throws VeskException when it has none.
    TargetLocation locate(const DependencyReference& reference) const;

    /// What messages call the target: "unit::target", with "project/" in front for one of an import
    /// when another project has a target of that name.
    std::string nameOf(const TargetLocation& location) const;

    /// What every target of the project sees first. Throws NotFoundException for a project that is
    /// not the catalog's.
    const ImplicitLayers& implicitLayers(const Project& project) const;

    /// The same as one context.
    std::shared_ptr<Context> implicitContext(const Project& project) const;

  private:
    ProjectStore store_;
    std::vector<const Project*> projects_;
    std::unordered_map<const Project*, ImplicitLayers> layers_;
    const Project* active_ = nullptr;
};

}  // namespace Vesk
