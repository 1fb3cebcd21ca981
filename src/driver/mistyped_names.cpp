#include "driver/mistyped_names.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "base/report.h"
#include "base/text.h"
#include "platform/files.h"

namespace Vesk {
namespace {

bool mentions(std::string_view text, std::string_view name) {
    return std::ranges::search(text, name, {}, asciiLower, asciiLower).begin() != text.end();
}

bool mentions(const ValuePtr& value, std::string_view name) {
    return value && mentions(value->toDisplayString(), name);
}

bool mentions(const ContextTemplate& body, std::string_view name) {
    return std::ranges::any_of(
               body.assignments,
               [name](const Assignment& assignment) { return mentions(assignment.value, name); }) ||
           std::ranges::any_of(body.conditions, [name](const Condition& condition) {
               return mentions(condition.left, name) || mentions(condition.right, name) ||
                      (condition.body && mentions(*condition.body, name));
           });
}

bool mentions(const DependencyRecord& dependency, std::string_view name) {
    return mentions(dependency.macro.toDisplayString(), name) ||
           std::ranges::any_of(dependency.parameters, [name](const IdentifierPath& parameter) {
               return mentions(parameter.toDisplayString(), name);
           });
}

/// Rather too often than too seldom: a warning has to be right.
bool isReferredTo(const Target& target, const Context& context, const CiString& name) {
    return mentions(target.body, name) ||
           std::ranges::any_of(
               context.assignments(),
               [&name](const auto& entry) { return mentions(entry.second.value, name); }) ||
           std::ranges::any_of(target.dependencies, [&name](const DependencyRecord& dependency) {
               return mentions(dependency, name);
           });
}

}  // namespace

void warnOfMistypedNames(const Target& target, const Context& context, const ToolChoice& choice) {
    const auto tables = {&choice.builder->subjects(), &choice.tool->wants(), &choice.tool->needs()};
    std::vector<std::string> known;
    for (const Assignment& assignment : target.body.assignments) {
        const CiString& name = assignment.name;
        if (assignment.modifier == AssignModifier::Output ||
            std::ranges::any_of(
                tables, [&name](const AssignmentMap* table) { return table->contains(name); })) {
            continue;
        }
        if (known.empty()) {
            for (const AssignmentMap* table : tables) {
                std::ranges::transform(*table, std::back_inserter(known),
                                       [](const auto& entry) { return entry.first.str(); });
            }
        }
        const std::string hint = didYouMean(name, known);
        if (!hint.empty() && !isReferredTo(target, context, name)) {
            reportWarning(
                fmt::format("Variable '{}' ({}:{}) has no effect on the target.", name,
                            target.file ? platform::pathToUtf8(target.file->filename()) : "",
                            assignment.place.line),
                {hint});
        }
    }
}

std::string mistypedSource(const Context& context) {
    static const std::vector<CiString> sources = {"C_FILES",    "CPP_FILES", "C3_FILES",
                                                  "ASM_FILES",  "OBJ_FILES", "cmdline",
                                                  "WRITE_FILE", "NO_TOOL",   "pwsh"};
    std::vector<std::string> known;
    std::ranges::transform(sources, std::back_inserter(known), &CiString::str);
    for (const auto& [name, assignment] : context.assignments()) {
        if (std::ranges::find(sources, name) != sources.end()) {
            continue;
        }
        if (const std::string hint = didYouMean(name, known); !hint.empty()) {
            return "'" + name.str() + "' (" + hint + ")";
        }
    }
    return {};
}

}  // namespace Vesk
