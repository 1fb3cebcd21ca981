// The thing that a name stands for, and all places where it is named.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "editor/features/spot.h"

namespace Vesk::editor {

enum class EntityKind : std::uint8_t {
    None,
    Target,
    Parameter,
    Alias,
    Variable,
    Profile,
    Tool,
    Unit,
    Project,
    File,
};

struct Entity {
    EntityKind kind = EntityKind::None;
    std::string name;
    BlockPlace owner;  ///< the target itself, or the block that a parameter or variable belongs to
    const ProjectView* project = nullptr;
    const UnitView* unit = nullptr;
    std::filesystem::path file;  ///< of a file
};

/// What the name at the cursor stands for; `spot` is what is there.
Entity entityAt(const Cursor& cursor, const Spot& spot);

struct Occurrence {
    const Document* document = nullptr;
    TextSpan span;
    bool definition = false;  ///< the place where it is made, or is given a value
    bool inText = false;      ///< in a string, where names have no "-"
};

/// All places in the texts that belong to the projects at hand, in no order, each once. A variable
/// that does not leave its target is looked for there only.
std::vector<Occurrence> occurrencesOf(Workspace& workspace, const Entity& entity);

}  // namespace Vesk::editor
