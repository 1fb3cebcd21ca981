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

std::string textIn(const AssignmentMap& assignments, std::string_view name) {
    const auto found = assignments.find(name);
    return found == assignments.end() || !found->second.value ? std::string()
                                                              : found->second.value->toString();
}

}  // namespace Vesk
