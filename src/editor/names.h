// Which target a dependency means, and which variables there are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "editor/diagnostic.h"
#include "editor/workspace.h"
#include "tools/variables.h"

namespace Vesk::editor {

/// How far the parts of a reference could be followed; what is not found is null.
struct DependencyTarget {
    const ProjectView* project = nullptr;
    const UnitView* unit = nullptr;
    BlockPlace target;
};

/// What a dependency, written in that unit of that project, refers to. A macro refers to nothing.
DependencyTarget resolve(const DependencySymbol& dependency, const ProjectView& project,
                         const UnitView& unit);

/// The dependency of the block whose outputs are read under that path, and how many names of the
/// path stand for it: of `unit.target.NAME` two; null where the path is a variable of the block.
struct OutputOf {
    const DependencySymbol* dependency = nullptr;
    std::size_t names = 0;
};
OutputOf outputOf(const Block& block, const Read& read, const UnitView& unit);

/// All that tools know, made once.
const std::vector<RegisteredGroup>& variableGroups();

/// Whether some tool knows a variable of that name, in any case of letters.
bool isDocumented(std::string_view name);

/// The names that were probably meant by one that no tool knows.
std::vector<std::string> likelyVariables(std::string_view name);

/// Puts "did you mean 'x'?" and the change to each name with the diagnostic.
void suggest(Diagnostic& diagnostic, const std::vector<std::string>& names);

/// The one of the candidates that is nearly called so; none or one.
std::vector<std::string> nearest(std::string_view name, const std::vector<std::string>& candidates);

/// Whether the block reads a variable: in a value, a condition, an argument or a macro.
bool readsVariable(const Block& block, std::string_view name);

/// Whether the block itself, no nested context of it, gives the variable a value.
bool givesVariable(const Block& block, std::string_view name);

}  // namespace Vesk::editor
