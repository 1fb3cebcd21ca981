// Other names for targets, variables and parameters.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "editor/diagnostic.h"
#include "editor/features/entity.h"

namespace Vesk::editor {

/// By document, in the order of their places.
using WorkspaceEdits = std::map<const Document*, std::vector<Edit>>;

/// The name that is there; throws VeskException for one that cannot be changed.
TextSpan renamedSpan(const Cursor& cursor);

/// The changes that give what is at the cursor another name, wherever it is named. Throws
/// VeskException for what cannot be renamed and for a name that cannot stand there or is taken.
WorkspaceEdits rename(const Cursor& cursor, const std::string& name);

}  // namespace Vesk::editor
