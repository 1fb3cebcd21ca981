#include "tools/variables.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <iterator>

#include "tools/tool_registry.h"

namespace Vesk {

namespace {

constexpr Variable kOfTargets[] = {
    {"DESCRIPTION", "string", "", "what `-l` shows beside the target's name",
     R"("the command-line tool")"},
    {"OUTPUT_DIR", "string, path", "`out`, with a profile `out/<profile>`",
     "the output directory, relative to the project's root", R"("build")"},
    {"ENV", "context", "",
     "environment variables of the target's commands; other targets do not see them",
     R"({ LANG = "C" MODE = "fast" })"},
    {"ALWAYS", "`yes`, `no`", "`no`", "the commands run in every build that asks for the target",
     "\"yes\""},
    {"COMPILE_COMMANDS", "string", "",
     "in a profile of the project: the compilation database that every build keeps current, "
     "relative to the project's root",
     R"("compile_commands.json")"},
    {"OPTIONS", "string", "",
     "in a profile of the project: options for every build, such as `-j 8`; those of the command "
     "line and of `VESK_OPTIONS` win",
     R"("-j 8 -k")"},
    {"TEST", "`yes`, `no`", "`no`", "the target is a test, which `--test` runs", R"("yes")"},
    {"TEST_TIMEOUT", "integer", "`300`",
     "the seconds after which `--test` kills the test; `0`: never", "20"},
    {"SIDE_BY_SIDE", "`yes`, `no`", "`no`",
     "with `-j`, a target of commands or a file writer is built while others are; its "
     "dependencies and the paths that it names say what it reads and makes",
     R"("yes")"},
};

constexpr Variable kBuiltIns[] = {
    {"os_family", "string", "", "`windows` or `unix`"},
    {"year", "string", "", "the current year"},
    {"month", "string", "", "the current month, `1` to `12`"},
    {"project_root", "string", "",
     "the directory of the project file, or of the unit file when there is no project"},
    {"output_def_dir", "string", "", "`out`"},
    {"PROFILE", "string", "", "the selected profile, empty without one"},
};

constexpr VariableGroup kTargetGroup = {"Every target", VariableRole::Input, kOfTargets};
constexpr VariableGroup kBuiltInGroup = {"What every target can read", VariableRole::BuiltIn,
                                         kBuiltIns};
constexpr const VariableGroup* kEveryTarget[] = {&kTargetGroup, &kBuiltInGroup};

/// Puts the group behind the others with the same title.
void insert(std::vector<RegisteredGroup>& groups, RegisteredGroup group) {
    const auto last =
        std::ranges::find(groups.rbegin(), groups.rend(), group.group->title,
                          [](const RegisteredGroup& each) { return each.group->title; });
    groups.insert(last == groups.rend() ? groups.end() : last.base(), std::move(group));
}

// --- Markdown ------------------------------------------------------------------------------------

struct Column {
    std::string_view heading;
    std::string (*cell)(const Variable& variable);
};

constexpr std::array kColumns = {
    Column{"Variable", [](const Variable& v) { return fmt::format("`{}`", v.name); }},
    Column{"Type", [](const Variable& v) { return std::string(v.type); }},
    Column{"Default", [](const Variable& v) { return std::string(v.standard); }},
    Column{"Meaning", [](const Variable& v) { return std::string(v.meaning); }},
    Column{"Example",
           [](const Variable& v) {
               return v.example.empty() ? std::string() : fmt::format("`{}`", v.example);
           }},
};

using Rows = std::vector<const Variable*>;

/// Columns without any text are left out.
std::string markdownTable(const Rows& rows) {
    std::string heading = "|";
    std::string rule = "|";
    std::vector<std::string> lines(rows.size(), "|");
    for (const Column& column : kColumns) {
        if (std::ranges::all_of(rows, [&](const Variable* v) { return column.cell(*v).empty(); })) {
            continue;
        }
        heading += fmt::format(" {} |", column.heading);
        rule += "---|";
        for (std::size_t row = 0; row < rows.size(); ++row) {
            const std::string cell = column.cell(*rows[row]);
            lines[row] += cell.empty() ? " |" : fmt::format(" {} |", cell);
        }
    }
    return fmt::format("{}\n{}\n{}\n", heading, rule, fmt::join(lines, "\n"));
}

}  // namespace

std::string_view roleText(VariableRole role) noexcept {
    switch (role) {
        case VariableRole::Output:
        case VariableRole::Product:
            return ", an output";
        case VariableRole::Setting:
            return ", in the declaration of a tool";
        case VariableRole::BuiltIn:
            return ", given to every target";
        case VariableRole::Input:
            break;
    }
    return "";
}

VariableGroups variablesOfEveryTarget() noexcept {
    return kEveryTarget;
}

std::vector<RegisteredGroup> registeredGroups() {
    std::vector<RegisteredGroup> groups;
    for (const VariableGroup* group : variablesOfEveryTarget()) {
        groups.push_back({group, {}});
    }
    for (const ToolType* type : toolTypes()) {
        for (const VariableGroup* group : type->variables) {
            const auto known = std::ranges::find(groups, group, &RegisteredGroup::group);
            if (known == groups.end()) {
                insert(groups, {group, {type->word}});
            } else {
                known->toolTypes.push_back(type->word);
            }
        }
    }
    return groups;
}

AssignmentMap tableOf(std::initializer_list<const VariableGroup*> groups) {
    AssignmentMap table;
    for (const VariableGroup* group : groups) {
        for (const Variable& variable : group->variables) {
            Assignment assignment;
            assignment.name = variable.name;
            assignment.op = AssignOperator::None;
            table.emplace(assignment.name, std::move(assignment));
        }
    }
    return table;
}

std::string variableTables() {
    const std::vector<RegisteredGroup> groups = registeredGroups();
    std::string text;
    for (auto first = groups.begin(); first != groups.end();) {
        const std::string_view title = first->group->title;
        Rows rows;
        for (; first != groups.end() && first->group->title == title; ++first) {
            std::ranges::transform(first->group->variables, std::back_inserter(rows),
                                   [](const Variable& variable) { return &variable; });
        }
        text += fmt::format("<!-- variables: {} -->\n{}<!-- end: {} -->\n", title,
                            markdownTable(rows), title);
    }
    return text;
}

}  // namespace Vesk
