// What variables mean: the one table from which documentation and --explain are made, and editors
// may take what they complete and explain.
//
// Each tool type registers the groups that hold for it (tool_registry.h). A group that several
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
    Input,    ///< a target gives it, itself or through a profile, a project, the command line
    Output,   ///< a target has it when it is built
    Setting,  ///< a tool's declaration gives it
    BuiltIn,  ///< every target can read it
};

/// Texts are Markdown without links; empty ones are left out.
struct Variable {
    std::string_view name;
    std::string_view type;
    std::string_view standard;  ///< what holds where it is not given
    std::string_view meaning;
    std::string_view example = {};  ///< a value as unit files write it
};

/// Variables of one subject. What is referred to lives as long as the program.
struct VariableGroup {
    std::string_view title;
    VariableRole role;
    std::span<const Variable> variables;
};

using VariableGroups = std::span<const VariableGroup* const>;

/// What holds for targets whatever tool they are built with.
VariableGroups variablesOfEveryTarget() noexcept;

/// A group, and the words of the types that registered it; none: it holds for every tool.
struct RegisteredGroup {
    const VariableGroup* group;
    std::vector<std::string_view> toolTypes;
};

/// All of them, each once, those of one title side by side; first those of every target.
std::vector<RegisteredGroup> registeredGroups();

/// The groups' names, without values: what a builder or matcher looks at.
AssignmentMap tableOf(std::initializer_list<const VariableGroup*> groups);

/// The groups of each title as a table in Markdown, each between two comments that name the title.
std::string variableTables();

}  // namespace Vesk
