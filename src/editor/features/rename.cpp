#include "editor/features/rename.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/ci_string.h"
#include "base/exception.h"
#include "editor/names.h"
#include "grammar/identifier.h"

namespace Vesk::editor {
namespace {

void requireRenamable(const Entity& entity) {
    switch (entity.kind) {
        case EntityKind::Variable:
            if (isDocumented(entity.name)) {
                throw VeskException(fmt::format(
                    "'{}' is a variable that tools know; another name would mean nothing to them.",
                    entity.name));
            }
            return;
        case EntityKind::Target:
        case EntityKind::Parameter:
        case EntityKind::Alias:
        case EntityKind::Profile:
        case EntityKind::Tool:
        case EntityKind::Unit:
            return;
        default:
            throw VeskException("There is nothing here that can be renamed.");
    }
}

bool isTaken(const Entity& entity, const std::string& name) {
    const auto isCalled = [&name](const Name& each) { return equalsIgnoringCase(each.text, name); };
    switch (entity.kind) {
        case EntityKind::Target:
            return static_cast<bool>(entity.unit->find(name));
        case EntityKind::Unit:
            return entity.project->findUnit(name) != nullptr;
        case EntityKind::Parameter:
        case EntityKind::Variable:
            return std::ranges::any_of(entity.owner.block->parameters, isCalled) ||
                   std::ranges::any_of(entity.owner.block->writes, [&](const Write& write) {
                       return !write.nested && isCalled(write.name);
                   });
        case EntityKind::Profile:
        case EntityKind::Tool: {
            const auto blocks = entity.project->blocks(entity.owner.block->kind);
            return std::ranges::any_of(blocks, [&](const BlockPlace& place) {
                return place.block != entity.owner.block && isCalled(place.block->name);
            });
        }
        default:
            return false;
    }
}

}  // namespace

TextSpan renamedSpan(const Cursor& cursor) {
    const Spot spot = spotAt(cursor.document, cursor.place);
    requireRenamable(entityAt(cursor, spot));
    return spot.span;
}

WorkspaceEdits rename(const Cursor& cursor, const std::string& name) {
    const Spot spot = spotAt(cursor.document, cursor.place);
    const Entity entity = entityAt(cursor, spot);
    requireRenamable(entity);
    if (!isIdentifier(name)) {
        throw VeskException(
            fmt::format("'{}' cannot be a name: names have letters, digits, '_' and '-', begin "
                        "with a letter or "
                        "'_', and are no keywords.",
                        name));
    }
    if (!equalsIgnoringCase(name, entity.name) && isTaken(entity, name)) {
        throw VeskException(fmt::format("There is a '{}' already.", name));
    }
    WorkspaceEdits edits;
    for (const Occurrence& occurrence : occurrencesOf(cursor.workspace, entity)) {
        if (occurrence.inText && name.find('-') != std::string::npos) {
            throw VeskException(fmt::format(
                "'{}' is read inside of a string, where names have no '-'.", entity.name));
        }
        edits[occurrence.document].push_back({occurrence.span, name});
    }
    return edits;
}

}  // namespace Vesk::editor
