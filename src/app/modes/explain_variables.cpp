#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <vector>

#include "app/modes/modes.h"
#include "base/ci_string.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/text.h"
#include "tools/tool_registry.h"
#include "tools/variables.h"

namespace Vesk::modes {
namespace {

std::string withoutMarkdown(std::string_view text) {
    std::string plain(text);
    std::erase(plain, '`');
    return plain;
}

void print(const Variable& variable, const RegisteredGroup& registered) {
    console::normal("{}: {}{}", variable.name, withoutMarkdown(variable.type),
                    roleText(registered.group->role));
    console::normal("  {}", withoutMarkdown(variable.meaning));
    if (!variable.standard.empty()) {
        console::normal("  default: {}", withoutMarkdown(variable.standard));
    }
    if (!variable.example.empty()) {
        console::normal("  example: {} = {}", variable.name, variable.example);
    }
    if (!registered.toolTypes.empty()) {
        console::normal("  tools: {}", fmt::join(registered.toolTypes, ", "));
    }
}

[[noreturn]] void throwUnknown(const std::string& name,
                               const std::vector<RegisteredGroup>& groups) {
    VeskException error(fmt::format("There is no variable '{}' that a tool knows.", name));
    std::vector<std::string> known;
    for (const RegisteredGroup& registered : groups) {
        std::ranges::transform(registered.group->variables, std::back_inserter(known),
                               [](const Variable& variable) { return std::string(variable.name); });
    }
    const std::vector<std::string> meant = meantBy(name);
    error.addNote(meant.empty() ? didYouMean(name, known) : didYouMean(meant));
    error.addNote("vesk --explain lists all variables that tools know");
    throw error;
}

void explain(const std::string& name, const std::vector<RegisteredGroup>& groups) {
    bool found = false;
    for (const RegisteredGroup& registered : groups) {
        for (const Variable& variable : registered.group->variables) {
            if (equalsIgnoringCase(variable.name, name)) {
                print(variable, registered);
                found = true;
            }
        }
    }
    if (!found) {
        throwUnknown(name, groups);
    }
}

std::size_t widthOfNames(const std::vector<RegisteredGroup>& groups) {
    std::size_t width = 0;
    for (const RegisteredGroup& registered : groups) {
        for (const Variable& variable : registered.group->variables) {
            width = std::max(width, variable.name.size());
        }
    }
    return width;
}

void list(const std::vector<RegisteredGroup>& groups) {
    const std::size_t width = widthOfNames(groups);
    std::string_view title;
    for (const RegisteredGroup& registered : groups) {
        if (registered.group->title != title) {
            title = registered.group->title;
            console::normal("{}", title);
        }
        for (const Variable& variable : registered.group->variables) {
            console::normal("  {:{}}  {}", variable.name, width, withoutMarkdown(variable.meaning));
        }
    }
}

}  // namespace

int explainVariables(const Settings& settings) {
    const std::vector<RegisteredGroup> groups = registeredGroups();
    if (settings.variable.empty()) {
        list(groups);
    } else {
        explain(settings.variable, groups);
    }
    return 0;
}

int printVariableTables(const Settings& /*settings*/) {
    console::normal("{}", variableTables());
    return 0;
}

}  // namespace Vesk::modes
