#include "editor/features/entity.h"

#include "base/ci_string.h"
#include "editor/names.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

class Resolver {
  public:
    Resolver(const Cursor& cursor, const Spot& spot)
        : spot_(spot),
          project_(cursor.workspace.projectOf(cursor.document)),
          unit_(project_.unitOf(cursor.document)) {}

    Entity run() const {
        switch (spot_.kind) {
            case SpotKind::BlockName:
                return ofBlock();
            case SpotKind::Parameter:
                return inBlock(EntityKind::Parameter, spot_.name->text);
            case SpotKind::Write:
                return variable(spot_.name->text);
            case SpotKind::Read:
                return ofRead();
            case SpotKind::Alias:
                return inBlock(EntityKind::Alias, spot_.name->text);
            case SpotKind::DependencyProject:
            case SpotKind::DependencyUnit:
            case SpotKind::DependencyTarget:
                return ofDependency(*spot_.dependency, spot_.kind);
            case SpotKind::UnitLine:
            case SpotKind::UnitEntry:
                return ofUnit(project_, spot_.name->text);
            case SpotKind::ProjectLine:
                return ofProject(project_);
            case SpotKind::SourceProfile:
                return profile(project_, spot_.name->text);
            case SpotKind::UnitFile:
                return file(project_.root / platform::pathFromUtf8(spot_.name->text));
            case SpotKind::ImportLocation:
            case SpotKind::ImportedProfile:
                return ofImport();
            case SpotKind::None:
                break;
        }
        return {};
    }

  private:
    Entity ofBlock() const {
        const BlockKind kind = spot_.block.block->kind;
        Entity entity = inBlock(kind == BlockKind::Target    ? EntityKind::Target
                                : kind == BlockKind::Profile ? EntityKind::Profile
                                                             : EntityKind::Tool,
                                spot_.name->text);
        return entity;
    }

    Entity inBlock(EntityKind kind, const std::string& name) const {
        return {kind, name, spot_.block, &project_, unit_, {}};
    }

    bool isParameter(const std::string& name) const {
        for (const Name& parameter : spot_.block.block->parameters) {
            if (equalsIgnoringCase(parameter.text, name)) {
                return true;
            }
        }
        return false;
    }

    Entity variable(const std::string& name) const {
        return inBlock(isParameter(name) ? EntityKind::Parameter : EntityKind::Variable, name);
    }

    Entity ofRead() const {
        const OutputOf output =
            unit_ == nullptr ? OutputOf{} : outputOf(*spot_.block.block, *spot_.read, *unit_);
        if (output.dependency == nullptr) {
            return spot_.segment == 0 ? variable(spot_.name->text) : Entity{};
        }
        if (spot_.segment < output.names) {
            return ofOutputName(output);
        }
        const DependencyTarget meant = resolve(*output.dependency, project_, *unit_);
        return meant.target && spot_.segment == output.names
                   ? Entity{EntityKind::Variable, spot_.name->text, meant.target,
                            meant.project,        meant.unit,       {}}
                   : Entity{};
    }

    Entity ofOutputName(const OutputOf& output) const {
        const DependencySymbol& dependency = *output.dependency;
        if (!dependency.alias.empty()) {
            return inBlock(EntityKind::Alias, dependency.alias.text);
        }
        return ofDependency(dependency, spot_.segment + 1 < output.names
                                            ? SpotKind::DependencyUnit
                                            : SpotKind::DependencyTarget);
    }

    Entity ofDependency(const DependencySymbol& dependency, SpotKind part) const {
        if (unit_ == nullptr) {
            return {};
        }
        const DependencyTarget meant = resolve(dependency, project_, *unit_);
        if (part == SpotKind::DependencyProject) {
            return meant.project == nullptr ? Entity{} : ofProject(*meant.project);
        }
        if (part == SpotKind::DependencyUnit) {
            return meant.unit == nullptr ? Entity{} : ofUnit(*meant.project, meant.unit->name);
        }
        return meant.target ? Entity{EntityKind::Target, dependency.target.text,
                                     meant.target,       meant.project,
                                     meant.unit,         {}}
                            : Entity{};
    }

    static Entity ofUnit(const ProjectView& project, const std::string& name) {
        const UnitView* const unit = project.findUnit(name);
        return {
            unit == nullptr ? EntityKind::None : EntityKind::Unit, name, {}, &project, unit, {}};
    }

    static Entity ofProject(const ProjectView& project) {
        return {EntityKind::Project, project.name, {}, &project, nullptr, {}};
    }

    static Entity file(std::filesystem::path path) {
        return {EntityKind::File, {}, {}, nullptr, nullptr, std::move(path)};
    }

    static Entity profile(const ProjectView& project, const std::string& name) {
        for (const BlockPlace& place : project.blocks(BlockKind::Profile)) {
            if (equalsIgnoringCase(place.block->name.text, name)) {
                return {EntityKind::Profile, name, place, &project, nullptr, {}};
            }
        }
        return {};
    }

    Entity ofImport() const {
        const ImportSymbol& import = *spot_.import;
        for (const auto& [alias, project] : project_.imports) {
            const std::string& given = import.byPath ? import.alias.text : import.location.text;
            if (alias != (given.empty() ? project->name : given)) {
                continue;
            }
            return spot_.kind == SpotKind::ImportedProfile ? profile(*project, spot_.name->text)
                                                           : ofProject(*project);
        }
        return {};
    }

    const Spot& spot_;
    const ProjectView& project_;
    const UnitView* unit_;
};

}  // namespace

Entity entityAt(const Cursor& cursor, const Spot& spot) {
    return Resolver(cursor, spot).run();
}

}  // namespace Vesk::editor
