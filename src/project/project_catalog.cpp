#include "project/project_catalog.h"

#include <algorithm>

#include "base/text.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

std::shared_ptr<const Unit> unitOf(const Project& project, std::string_view name) {
    auto unit = project.findUnit(name);
    if (!unit) {
        throw NotFoundException("Unit", std::string(name), didYouMean(name, project.unitNames()));
    }
    return unit;
}

TargetLocation targetOf(const Project& project, std::shared_ptr<const Unit> unit,
                        const std::string& name) {
    auto target = unit->findTarget(name);
    if (!target) {
        throw NotFoundException("Target", unit->name + "::" + name,
                                didYouMean(name, unit->targetNames()));
    }
    return {&project, std::move(unit), std::move(target)};
}

/// Why a name that a project gives to an import means nothing now, or what it may be meant to be.
std::string hintFor(const Project& from, const std::string& name) {
    std::vector<std::string> needed;
    for (const ProjectImport& entry : from.declaredImports) {
        const std::string& known = entry.byPath ? entry.alias : entry.location;
        if (known == name && !entry.sourceProfile.empty()) {
            needed.push_back("'" + entry.sourceProfile + "'");
        }
    }
    return needed.empty() ? didYouMean(name, from.importNames())
                          : "it is imported with profile " + joined(needed, " or ") + " only";
}

}  // namespace

ProjectCatalog::ProjectCatalog(ProjectStore store, const Context& base, const Context& overrides)
    : store_(std::move(store)), projects_(store_.projects()) {
    layers_.reserve(projects_.size());
    for (const Project* project : projects_) {
        layers_.emplace(project, Vesk::implicitLayers(*project, base, overrides));
    }
}

void ProjectCatalog::setActive(const Project& project) {
    implicitLayers(project);  // throws for one that is not ours
    active_ = &project;
}

const Project& ProjectCatalog::active() const {
    if (active_ == nullptr) {
        throw VeskException("ProjectCatalog has no active page.");
    }
    return *active_;
}

TargetLocation ProjectCatalog::locate(const DependencyReference& reference, const Project& from,
                                      const Unit& currentUnit) const {
    if (reference.ns.empty()) {
        const std::string& unitName = reference.unit.empty() ? currentUnit.name : reference.unit;
        return targetOf(from, unitOf(from, unitName), reference.target);
    }
    const Project* project = from.findImport(reference.ns);
    if (project == nullptr) {
        throw NotFoundException("Project", reference.ns, hintFor(from, reference.ns));
    }
    return targetOf(*project, unitOf(*project, reference.unit), reference.target);
}

TargetLocation ProjectCatalog::locate(const DependencyReference& reference) const {
    const Project& from = active();
    const auto& mainUnit = from.mainUnit();
    if (!reference.target.empty()) {
        return locate(reference, from, *mainUnit);
    }
    if (mainUnit->targets.empty()) {
        throw VeskException("Unit '" + mainUnit->name + "' has no targets.");
    }
    return {&from, mainUnit, mainUnit->targets.front()};
}

std::string ProjectCatalog::nameOf(const TargetLocation& location) const {
    std::string name = location.unit->name + "::" + location.target->name;
    const bool shared = location.project != active_ &&
                        std::ranges::any_of(projects_, [&location](const Project* other) {
                            const auto unit = other == location.project
                                                  ? nullptr
                                                  : other->findUnit(location.unit->name);
                            return unit && unit->findTarget(location.target->name);
                        });
    return shared ? location.project->name + "/" + name : name;
}

const ImplicitLayers& ProjectCatalog::implicitLayers(const Project& project) const {
    const auto found = layers_.find(&project);
    if (found == layers_.end()) {
        throw NotFoundException("Project", project.name);
    }
    return found->second;
}

std::shared_ptr<Context> ProjectCatalog::implicitContext(const Project& project) const {
    return mergedLayers(implicitLayers(project));
}

}  // namespace Vesk
