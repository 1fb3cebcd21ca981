// What variables mean: the one table behind the documentation and --explain, which editors may use
// to complete and explain names.
//
// Each tool type registers the groups that apply to it (tool_registry.h). A group that several
// types share is one object.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/variable_table.h"

namespace Vesk {

enum class VariableRole {
    Input,    ///< a target gives it, directly or through a profile, a project or the command line
    Output,   ///< a target has it once it is built
    Product,  ///< the same, and only the builder can give it: what a target declares is ignored
    Setting,  ///< a tool's declaration gives it
    BuiltIn,  ///< every target can read it
};

/// What follows a variable's type where it is explained, such as ", an output"; empty for inputs.
std::string_view roleText(VariableRole role) noexcept;

/// Texts are Markdown without links; empty ones are left out.
struct Variable {
    std::string_view name;
    std::string_view type;
    std::string_view standard;  ///< the value if it is not given
    std::string_view meaning;
    std::string_view example = {};  ///< a value in the form that unit files use
};

/// Variables of one subject. Everything referred to lives as long as the program.
struct VariableGroup {
    std::string_view title;
    VariableRole role;
    std::span<const Variable> variables;
};

using VariableGroups = std::span<const VariableGroup* const>;

/// Variables of every target, whatever tool builds it.
VariableGroups variablesOfEveryTarget() noexcept;

/// A group, and the words of the types that registered it; none means every tool.
struct RegisteredGroup {
    const VariableGroup* group;
    std::vector<std::string_view> toolTypes;
};

/// All groups, each once, with those of one title side by side; first those of every target.
std::vector<RegisteredGroup> registeredGroups();

/// The names in the groups, without values: what a builder or matcher looks at.
AssignmentMap tableOf(std::initializer_list<const VariableGroup*> groups);

/// The groups of each title as a Markdown table, each between two comments that name the title.
std::string variableTables();

}  // namespace Vesk
