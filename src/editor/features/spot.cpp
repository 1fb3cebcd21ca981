#include "editor/features/spot.h"

namespace Vesk::editor {
namespace {

class Finder {
  public:
    Finder(const Document& document, std::uint32_t place)
        : document_(document), piece_(document.pieceAt(place)), place_(piece_.inPiece(place)) {}

    Spot run() {
        const Symbols& symbols = *piece_.symbols;
        if (touch(symbols.unit, SpotKind::UnitLine) ||
            touch(symbols.project, SpotKind::ProjectLine)) {
            return spot_;
        }
        for (const UnitSymbol& unit : symbols.units) {
            spot_.unit = &unit;
            if (inUnit(unit)) {
                return spot_;
            }
        }
        spot_.unit = nullptr;
        for (const ImportSymbol& import : symbols.imports) {
            spot_.import = &import;
            if (inImport(import)) {
                return spot_;
            }
        }
        spot_.import = nullptr;
        for (const Block& block : symbols.blocks) {
            if (block.span.touches(place_)) {
                spot_.block = {&document_, &piece_, &block};
                inBlock(block);
                break;
            }
        }
        return spot_;
    }

  private:
    bool touch(const Name& name, SpotKind kind) {
        if (name.empty() || !name.span.touches(place_)) {
            return false;
        }
        spot_.kind = kind;
        spot_.name = &name;
        spot_.span = piece_.inDocument(name.span);
        return true;
    }

    bool inUnit(const UnitSymbol& unit) {
        if (touch(unit.name, SpotKind::UnitEntry)) {
            return true;
        }
        for (const Name& file : unit.files) {
            if (touch(file, SpotKind::UnitFile)) {
                return true;
            }
        }
        return false;
    }

    bool inImport(const ImportSymbol& import) {
        return touch(import.location, SpotKind::ImportLocation) ||
               touch(import.sourceProfile, SpotKind::SourceProfile) ||
               touch(import.importedProfile, SpotKind::ImportedProfile);
    }

    bool inRead(const Read& read) {
        for (std::size_t segment = 0; segment < read.path.size(); ++segment) {
            if (touch(read.path[segment], SpotKind::Read)) {
                spot_.read = &read;
                spot_.segment = segment;
                return true;
            }
        }
        return false;
    }

    bool inDependency(const DependencySymbol& dependency) {
        spot_.dependency = &dependency;
        if (touch(dependency.project, SpotKind::DependencyProject) ||
            touch(dependency.unit, SpotKind::DependencyUnit) ||
            touch(dependency.target, SpotKind::DependencyTarget) ||
            touch(dependency.alias, SpotKind::Alias) ||
            (dependency.macro && inRead(*dependency.macro))) {
            return true;
        }
        for (const Read& argument : dependency.arguments) {
            if (inRead(argument)) {
                return true;
            }
        }
        spot_.dependency = nullptr;
        return false;
    }

    bool inBlock(const Block& block) {
        if (touch(block.name, SpotKind::BlockName)) {
            return true;
        }
        for (const Name& parameter : block.parameters) {
            if (touch(parameter, SpotKind::Parameter)) {
                return true;
            }
        }
        for (const DependencySymbol& dependency : block.dependencies) {
            if (inDependency(dependency)) {
                return true;
            }
        }
        for (const Write& write : block.writes) {
            spot_.write = write.span.touches(place_) ? &write : spot_.write;
            if (touch(write.name, SpotKind::Write)) {
                spot_.write = &write;
                return true;
            }
        }
        for (const Read& read : block.reads) {
            if (inRead(read)) {
                return true;
            }
        }
        return false;
    }

    const Document& document_;
    const Piece& piece_;
    std::uint32_t place_;
    Spot spot_;
};

}  // namespace

Spot spotAt(const Document& document, std::uint32_t place) {
    return Finder(document, place).run();
}

}  // namespace Vesk::editor
