#include <algorithm>
#include <cstdint>
#include <functional>

#include "base/ci_string.h"
#include "editor/checks.h"
#include "editor/features/entity.h"
#include "editor/names.h"

namespace Vesk::editor {
namespace {

bool isCalled(const Name& name, const std::string& text) {
    return equalsIgnoringCase(name.text, text);
}

bool givesOutput(const Block& block, const std::string& name) {
    return std::ranges::any_of(block.writes, [&name](const Write& write) {
        return !write.nested && write.modifier == "^" && isCalled(write.name, name);
    });
}

bool mergesOutputs(const Block& block) {
    return std::ranges::any_of(block.dependencies, &DependencySymbol::mergesOutputs);
}

/// All paths that a block reads, wherever they stand.
template <class Use>
void forEachRead(const Block& block, Use use) {
    for (const Read& read : block.reads) {
        use(read);
    }
    for (const DependencySymbol& dependency : block.dependencies) {
        if (dependency.macro) {
            use(*dependency.macro);
        }
        for (const Read& argument : dependency.arguments) {
            use(argument);
        }
    }
}

class Search {
  public:
    Search(Workspace& workspace, const Entity& entity) : workspace_(workspace), entity_(entity) {}

    std::vector<Occurrence> run() {
        switch (entity_.kind) {
            case EntityKind::Target:
                forEachUnit([this](const BlockPlace& place) { targetIn(place); });
                break;
            case EntityKind::Parameter:
            case EntityKind::Alias:
                inOwner();
                break;
            case EntityKind::Variable:
                variable();
                break;
            case EntityKind::Profile:
                profile();
                break;
            case EntityKind::Tool:
                add(entity_.owner, entity_.owner.block->name, true);
                break;
            case EntityKind::Unit:
                unit();
                break;
            default:
                break;
        }
        std::ranges::sort(found_, {}, [](const Occurrence& each) {
            return std::pair(each.document->path(), each.span.begin);
        });
        const auto again =
            std::unique(found_.begin(), found_.end(), [](const auto& a, const auto& b) {
                return a.document == b.document && a.span == b.span;
            });
        found_.erase(again, found_.end());
        return std::move(found_);
    }

  private:
    void add(const BlockPlace& place, const Name& name, bool definition = false) {
        add(*place.document, *place.piece, name, definition);
    }

    void add(const Document& document, const Piece& piece, const Name& name, bool definition) {
        const auto& tokens = piece.tree->tokens;
        const auto token = std::ranges::upper_bound(
            tokens, name.span.begin, {}, [](const SyntaxToken& t) { return t.span.begin; });
        const bool inText = token != tokens.begin() && std::prev(token)->kind != TokenClass::Name &&
                            std::prev(token)->kind != TokenClass::Keyword;
        found_.push_back({&document, piece.inDocument(name.span), definition, inText});
    }

    /// Every target of every project that is loaded, with its surroundings.
    void forEachUnit(const std::function<void(const BlockPlace&)>& use) {
        for (const ProjectView* project : workspace_.projects()) {
            project_ = project;
            for (const UnitView& unit : project->units) {
                unit_ = &unit;
                for (const Document* document : unit.documents) {
                    forEachBlock(*document, use);
                }
            }
        }
    }

    bool means(const DependencySymbol& dependency) const {
        return resolve(dependency, *project_, *unit_).target.block == entity_.owner.block;
    }

    void targetIn(const BlockPlace& place) {
        if (place.block == entity_.owner.block) {
            add(place, place.block->name, true);
        }
        for (const DependencySymbol& dependency : place.block->dependencies) {
            if (isCalled(dependency.target, entity_.name) && means(dependency)) {
                add(place, dependency.target);
            }
        }
        forEachRead(*place.block, [&](const Read& read) {
            const OutputOf output = outputOf(*place.block, read, *unit_);
            if (output.dependency != nullptr && output.dependency->alias.empty() &&
                means(*output.dependency)) {
                add(place, read.path[output.names - 1]);
            }
        });
    }

    /// Parameters and aliases: names of one block.
    void inOwner() {
        const Block& block = *entity_.owner.block;
        for (const Name& parameter : block.parameters) {
            if (entity_.kind == EntityKind::Parameter && isCalled(parameter, entity_.name)) {
                add(entity_.owner, parameter, true);
            }
        }
        for (const DependencySymbol& dependency : block.dependencies) {
            if (entity_.kind == EntityKind::Alias && isCalled(dependency.alias, entity_.name)) {
                add(entity_.owner, dependency.alias, true);
            }
        }
        own(entity_.owner, true);
    }

    /// What the block writes and reads under the name. `all`: also where the first name of a path
    /// stands for a dependency.
    void own(const BlockPlace& place, bool all) {
        for (const Write& write : place.block->writes) {
            if (!write.nested && isCalled(write.name, entity_.name)) {
                add(place, write.name, true);
            }
        }
        forEachRead(*place.block, [&](const Read& read) {
            const bool free = all || unit_ == nullptr ||
                              outputOf(*place.block, read, *unit_).dependency == nullptr;
            if (free && isCalled(read.path.front(), entity_.name)) {
                add(place, read.path.front());
            }
        });
    }

    /// Reads of a dependency's output of the name; `ofOwner`: only of the owner's.
    void outputsIn(const BlockPlace& place, bool ofOwner) {
        forEachRead(*place.block, [&](const Read& read) {
            const OutputOf output = outputOf(*place.block, read, *unit_);
            if (output.dependency != nullptr && output.names < read.path.size() &&
                isCalled(read.path[output.names], entity_.name) &&
                (!ofOwner || means(*output.dependency))) {
                add(place, read.path[output.names]);
            }
        });
    }

    void variable() {
        if (entity_.owner.block->kind == BlockKind::Target && !leavesOwner()) {
            unit_ = entity_.unit;
            own(entity_.owner, false);
            forEachUnit([this](const BlockPlace& place) { outputsIn(place, true); });
            return;
        }
        forEachUnit([this](const BlockPlace& place) {
            own(place, false);
            outputsIn(place, false);
        });
        unit_ = nullptr;
        for (const BlockKind kind : {BlockKind::Profile, BlockKind::Tool}) {
            for (const BlockPlace& place : entity_.project->blocks(kind)) {
                own(place, false);
            }
        }
    }

    /// Whether other blocks may mean the same variable by the bare name: it comes from a profile,
    /// or outputs are merged.
    bool leavesOwner() {
        const Block& block = *entity_.owner.block;
        bool leaves = !givesVariable(block, entity_.name) || mergesOutputs(block);
        for (const BlockPlace& place : entity_.project->blocks(BlockKind::Profile)) {
            leaves = leaves || givesVariable(*place.block, entity_.name);
        }
        if (!leaves && givesOutput(block, entity_.name)) {
            forEachUnit([&](const BlockPlace& place) {
                for (const DependencySymbol& dependency : place.block->dependencies) {
                    leaves = leaves || (dependency.mergesOutputs && means(dependency));
                }
            });
        }
        return leaves;
    }

    void profile() {
        add(entity_.owner, entity_.owner.block->name, true);
        for (const ProjectView* project : workspace_.projects()) {
            if (project->file == nullptr) {
                continue;
            }
            const Piece& piece = project->file->pieces().front();
            for (const ImportSymbol& import : piece.symbols->imports) {
                if (project == entity_.project && isCalled(import.sourceProfile, entity_.name)) {
                    add(*project->file, piece, import.sourceProfile, false);
                }
                const std::string& given = import.byPath ? import.alias.text : import.location.text;
                if (isCalled(import.importedProfile, entity_.name) &&
                    project->findImport(given.empty() ? entity_.project->name : given) ==
                        entity_.project) {
                    add(*project->file, piece, import.importedProfile, false);
                }
            }
        }
    }

    void unit() {
        if (entity_.project->file != nullptr) {
            const Piece& piece = entity_.project->file->pieces().front();
            for (const UnitSymbol& unit : piece.symbols->units) {
                if (unit.name.text == entity_.name) {
                    add(*entity_.project->file, piece, unit.name, true);
                }
            }
        }
        for (const Document* document : entity_.unit->documents) {
            const Piece& piece = document->pieces().front();
            if (!piece.symbols->unit.empty()) {
                add(*document, piece, piece.symbols->unit, true);
            }
        }
        forEachUnit([this](const BlockPlace& place) { unitIn(place); });
    }

    void unitIn(const BlockPlace& place) {
        for (const DependencySymbol& dependency : place.block->dependencies) {
            if (!dependency.unit.empty() &&
                resolve(dependency, *project_, *unit_).unit == entity_.unit) {
                add(place, dependency.unit);
            }
        }
        forEachRead(*place.block, [&](const Read& read) {
            const OutputOf output = outputOf(*place.block, read, *unit_);
            if (output.names == 2 &&
                resolve(*output.dependency, *project_, *unit_).unit == entity_.unit) {
                add(place, read.path.front());
            }
        });
    }

    Workspace& workspace_;
    const Entity& entity_;
    const ProjectView* project_ = nullptr;
    const UnitView* unit_ = nullptr;
    std::vector<Occurrence> found_;
};

}  // namespace

std::vector<Occurrence> occurrencesOf(Workspace& workspace, const Entity& entity) {
    return Search(workspace, entity).run();
}

}  // namespace Vesk::editor
