#include "tools/support/value_lists.h"

#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

const VeskValue* valueOf(const Context& target, std::string_view variable) {
    const Assignment* assignment = target.find(variable);
    return assignment == nullptr ? nullptr : assignment->value.get();
}

const VeskList* asList(const VeskValue& value) {
    return valueAs<VeskList>(&value);
}

bool isPath(const VeskValue& value) {
    return valueAs<VeskPathString>(&value) != nullptr;
}

}  // namespace

std::vector<std::string> entriesOf(const Context& target, std::string_view variable) {
    std::vector<std::string> entries;
    const VeskValue* value = valueOf(target, variable);
    if (value == nullptr) {
        return entries;
    }
    const auto take = [&entries](const ValuePtr& entry) {
        if (std::string text = entry ? entry->toString() : ""; !text.empty()) {
            entries.push_back(std::move(text));
        }
    };
    if (const VeskList* list = asList(*value)) {
        entries.reserve(list->items.size());
        for (const ValuePtr& item : list->items) {
            take(item);
        }
    } else if (isPath(*value) || valueAs<VeskBaseString>(value) == nullptr) {
        take(value->clone());
    } else {
        for (const ValuePtr& word : elementsOf(*value)) {
            take(word);
        }
    }
    return entries;
}

void addFlags(CommandText& command, const Context& target, std::string_view variable) {
    const VeskValue* value = valueOf(target, variable);
    if (value == nullptr) {
        return;
    }
    if (asList(*value) != nullptr || isPath(*value)) {
        command.add({}, entriesOf(target, variable));
    } else {
        command.addAsWritten(value->toString());
    }
}

bool hasEntries(const Context& target, std::string_view variable) {
    const VeskValue* value = valueOf(target, variable);
    if (value == nullptr) {
        return false;
    }
    const VeskList* list = asList(*value);
    return list != nullptr ? !list->items.empty() : !value->toString().empty();
}

}  // namespace Vesk
