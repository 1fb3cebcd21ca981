#include "tools/support/recipe_parts.h"

#include "tools/support/target_paths.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {

void addInput(Recipe& recipe, const char* name, const std::string& path) {
    recipe.inputs.push_back({resolvedAssignment(name, pathValue(path)), std::nullopt});
}

void addInputs(Recipe& recipe, const char* name, const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        addInput(recipe, name, path);
    }
}

void addOutput(Recipe& recipe, const char* name, const std::string& path) {
    recipe.outputs.push_back(resolvedAssignment(name, pathValue(path), AssignModifier::Output));
}

std::string outputNameOf(const TargetContext& target) {
    std::string name = target.textOf("OUTPUT_NAME").value_or("");
    return name.empty() ? target.target().name : name;
}

ValuePtr textValues(const std::vector<std::string>& texts) {
    auto list = std::make_shared<VeskList>();
    for (const std::string& text : texts) {
        list->items.push_back(std::make_shared<VeskRawString>(text));
    }
    return list;
}

void exportAppend(std::vector<Assignment>& outputs, const char* variable, const ValuePtr& list) {
    if (static_cast<const VeskList&>(*list).items.empty()) {
        return;
    }
    Assignment output = resolvedAssignment(variable, list, AssignModifier::Output);
    output.op = AssignOperator::Append;
    outputs.push_back(std::move(output));
}

}  // namespace Vesk
