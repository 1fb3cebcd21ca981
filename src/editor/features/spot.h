// What stands at a place of a text.
#pragma once

#include <cstdint>

#include "editor/document.h"
#include "editor/workspace.h"

namespace Vesk::editor {

enum class SpotKind : std::uint8_t {
    None,
    UnitLine,
    ProjectLine,
    BlockName,  ///< of a target, a profile or a tool
    Parameter,
    DependencyProject,
    DependencyUnit,
    DependencyTarget,
    Alias,
    Write,
    Read,
    UnitEntry,
    UnitFile,
    ImportLocation,
    SourceProfile,
    ImportedProfile,
};

/// What is not there is null.
struct Spot {
    SpotKind kind = SpotKind::None;
    BlockPlace block;
    const Name* name = nullptr;
    const DependencySymbol* dependency = nullptr;
    const Write* write = nullptr;
    const Read* read = nullptr;
    std::size_t segment = 0;  ///< of `read`
    const UnitSymbol* unit = nullptr;
    const ImportSymbol* import = nullptr;
    TextSpan span;  ///< of the name, in the document
};

Spot spotAt(const Document& document, std::uint32_t place);

/// Where a question is asked.
struct Cursor {
    Workspace& workspace;
    const Document& document;
    std::uint32_t place = 0;
};

}  // namespace Vesk::editor
