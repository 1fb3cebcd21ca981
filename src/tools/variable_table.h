// The names that a class of matchers or builders looks at, as constant tables.
#pragma once

#include <initializer_list>
#include <string_view>

#include "types/context/context.h"

namespace Vesk {

/// Assignments by name. An entry without a value stands for "any value".
using AssignmentMap = Context::Map;

/// One entry of a table: a name, and a text if there is a default.
struct TableEntry {
    std::string_view name;
    const char* value = nullptr;  ///< null: no value
};

/// The entries as assignments. Default texts become plain strings.
AssignmentMap makeTable(std::initializer_list<TableEntry> entries);

/// The text of an entry's value; empty if there is no entry or no value.
std::string textIn(const AssignmentMap& assignments, std::string_view name);

}  // namespace Vesk
