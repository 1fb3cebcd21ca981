// The projects, units and targets at hand as completion sees them: read file by file as they are
// asked for, and empty where a file is broken.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "app/settings.h"
#include "grammar/model.h"
#include "grammar/outline.h"
#include "project/registry.h"

namespace Vesk {

/// A project file, or a unit file alone as a project of one unit.
struct ProjectAtHand {
    ProjectFile file;
    std::filesystem::path root;

    /// The targets of a unit; with an empty name or "1" of the main unit.
    std::vector<OutlinedTarget> targets(std::string_view unit) const;
};

/// The one that the settings lead to.
ProjectAtHand projectAtHand(const Settings& settings);

/// The user's registry.
Registry registryAtHand();

/// The one that the project at hand or the registry calls so; without units when there is none.
ProjectAtHand projectCalled(std::string_view name, const ProjectAtHand& from,
                            const Registry& registry);

/// By what names units of this project can call others, with what is known of each.
struct ProjectName {
    std::string name;
    std::string place;
};
std::vector<ProjectName> projectNames(const ProjectAtHand& from, const Registry& registry);

}  // namespace Vesk
