#include "tools/variable_table.h"

#include <memory>

#include "types/values/string_values.h"

namespace Vesk {

AssignmentMap makeTable(std::initializer_list<TableEntry> entries) {
    AssignmentMap table;
    for (const TableEntry& entry : entries) {
        Assignment assignment;
        assignment.name = entry.name;
        if (entry.value == nullptr) {
            assignment.op = AssignOperator::None;
        } else {
            assignment.value = std::make_shared<VeskString>(entry.value);
        }
        table.emplace(assignment.name, std::move(assignment));
    }
    return table;
}

}  // namespace Vesk
