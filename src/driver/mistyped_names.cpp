#include "driver/mistyped_names.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "base/report.h"
#include "base/text.h"
#include "driver/mentions.h"
#include "platform/files.h"
#include "tools/tool_registry.h"

namespace Vesk {
namespace {

bool isAmong(const std::vector<std::string>& names, std::string_view name) {
    return std::ranges::any_of(
        names, [name](const std::string& each) { return equalsIgnoringCase(each, name); });
}

/// "" or "did you mean 'C_FILES' or 'CPP_FILES'?": what is called like this elsewhere, else what is
/// nearly called like this. `type`: whose names count; null: those of all types.
std::string suggestionFor(std::string_view name, const std::vector<std::string>& known,
                          const ToolType* type) {
    std::vector<std::string> meant = meantBy(name, type);
    std::erase_if(meant, [&known](const std::string& each) { return !isAmong(known, each); });
    return meant.empty() ? didYouMean(name, known) : didYouMean(meant);
}

/// The tables of all that the tool looks at.
using Tables = std::array<const AssignmentMap*, 3>;

std::vector<std::string> namesIn(const Tables& tables) {
    std::vector<std::string> names;
    for (const AssignmentMap* table : tables) {
        std::ranges::transform(*table, std::back_inserter(names),
                               [](const auto& entry) { return entry.first.str(); });
    }
    return names;
}

}  // namespace

void warnOfMistypedNames(const Target& target, const Context& context, const ToolChoice& choice) {
    const Tables tables = {&choice.builder->subjects(), &choice.tool->wants(),
                           &choice.tool->needs()};
    std::vector<std::string> known;
    for (const Assignment& assignment : target.body().assignments) {
        const CiString& name = assignment.name;
        if (assignment.modifier == AssignModifier::Output ||
            std::ranges::any_of(
                tables, [&name](const AssignmentMap* table) { return table->contains(name); })) {
            continue;
        }
        if (known.empty()) {
            known = namesIn(tables);
        }
        const std::string hint = suggestionFor(name, known, findToolType(choice.tool->typeWord()));
        if (!hint.empty() && !mentions(target, name) && !mentions(context, name)) {
            reportWarning(
                fmt::format("Variable '{}' ({}:{}) has no effect on the target.", name,
                            target.file ? platform::pathToUtf8(target.file->filename()) : "",
                            assignment.place.line),
                {hint});
        }
    }
}

std::string mistypedSource(const Context& context) {
    std::vector<std::string> known;
    for (const ToolType* type : toolTypes()) {
        known.insert(known.end(), type->sources.begin(), type->sources.end());
    }
    for (const auto& [name, assignment] : context.assignments()) {
        if (isAmong(known, name)) {
            continue;
        }
        if (const std::string hint = suggestionFor(name, known, nullptr); !hint.empty()) {
            return "'" + name.str() + "' (" + hint + ")";
        }
    }
    return {};
}

}  // namespace Vesk
