#include <algorithm>
#include <fmt/format.h>
#include <vector>

#include "app/modes/modes.h"
#include "app/user_registry.h"
#include "base/console.h"
#include "platform/files.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/tool_registry.h"
#include "tools/toolchain_detection.h"
#include "tools/variable_table.h"

namespace Vesk::modes {
namespace {

/// A registered toolchain, as the table shows it.
struct Row {
    const char* state;
    std::string name;
    std::string family;  ///< toolchain_name
    std::string place;
};

constexpr const char* kNew = "new";
constexpr const char* kFound = "found";
constexpr const char* kGone = "gone";
constexpr const char* kDeclared = "declared";  // by hand, or found by a vesk with another PATH

/// Of a relative path nobody knows what it will be relative to.
bool isGone(const ToolType& type, const Context& declared, const std::string& place) {
    if (!platform::isAbsolutePath(place)) {
        return false;
    }
    if (type.compiler.empty()) {
        std::error_code error;
        return !platform::exists(platform::pathFromUtf8(place), error) && !error;
    }
    try {
        Context target;
        ToolchainPrograms(std::string(type.compiler))
            .place(declaredPlace(declared.assignments()), target);
        return false;
    } catch (const VeskException&) {
        return true;
    }
}

const char* stateOf(const ToolEntry& tool, const ToolType& type, const std::string& place,
                    const std::vector<DetectedTool>& found, const Registry& before) {
    if (std::ranges::find(found, tool.name, &DetectedTool::name) != found.end()) {
        return before.tools.contains(tool.name) ? kFound : kNew;
    }
    return isGone(type, *tool.context, place) ? kGone : kDeclared;
}

/// Every toolchain of the registry, in the order of their names.
std::vector<Row> rowsOf(const Registry& registry, const std::vector<DetectedTool>& found,
                        const Registry& before) {
    std::vector<Row> rows;
    for (const auto& [name, tool] : registry.tools) {
        if (!tool.context) {
            continue;
        }
        const AssignmentMap& declared = tool.context->assignments();
        const ToolType* type = findToolType(textIn(declared, "tool_type"));
        if (type != nullptr && type->isToolchain()) {
            const std::string place = textIn(declared, "toolchain_path");
            rows.push_back({stateOf(tool, *type, place, found, before), name,
                            textIn(declared, "toolchain_name"), place});
        }
    }
    return rows;
}

void print(const std::vector<Row>& rows) {
    std::size_t names = 0;
    std::size_t families = 0;
    for (const Row& row : rows) {
        names = std::max(names, row.name.size());
        families = std::max(families, row.family.size());
    }
    for (const Row& row : rows) {
        console::normal("  {:8}  {:{}}  {:{}}  {}", row.state, row.name, names, row.family,
                        families, row.place);
    }
}

bool isOfGone(const Row& row) noexcept {
    return row.state == kGone;
}

void removeGone(const std::filesystem::path& file, const std::vector<Row>& rows) {
    if (std::ranges::none_of(rows, isOfGone)) {
        return;
    }
    updateRegistry(file, [&rows](Registry& current) {
        for (const Row& row : rows) {
            if (isOfGone(row)) {
                current.tools.erase(row.name);
            }
        }
    });
    for (const Row& row : rows) {
        if (isOfGone(row)) {
            console::normal("Removed toolchain '{}'.", row.name);
        }
    }
}

}  // namespace

int findCompilers(const Settings& settings) {
    UserRegistry registry;
    const Registry& before = registry.read();
    const std::vector<DetectedTool> found = detectToolchains();
    if (found.empty()) {
        console::warning("No toolchain of a known type was found.");
    }
    const Registry after = updateRegistry(before.file, [&found](Registry& current) {
        for (const DetectedTool& tool : found) {
            current.registerTool(tool.name, tool.context);
        }
    });
    for (const DetectedTool& tool : found) {
        console::normal("Registered toolchain '{}'.", tool.name);
    }
    const std::vector<Row> rows = rowsOf(after, found, before);
    print(rows);
    if (settings.removeGone) {
        removeGone(before.file, rows);
    } else if (std::ranges::any_of(rows, isOfGone)) {
        console::normal("vesk --remove-gone takes those that are gone out of the registry.");
    }
    return 0;
}

}  // namespace Vesk::modes
