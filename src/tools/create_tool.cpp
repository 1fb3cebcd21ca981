#include "tools/create_tool.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <utility>

#include "base/attempt.h"
#include "base/console.h"
#include "base/report.h"
#include "base/text.h"
#include "tools/tool_registry.h"

namespace Vesk {

namespace {

constexpr std::string_view kToolType = "tool_type";

template <class... Args>
std::nullptr_t skip(fmt::format_string<Args...> format, Args&&... args) {
    console::warning(format, std::forward<Args>(args)...);
    return nullptr;
}

bool typeIsGivenTwice(const ContextTemplate& source) {
    const auto isType = [](const Assignment& assignment) {
        return equalsIgnoringCase(assignment.name, kToolType);
    };
    return std::count_if(source.assignments.begin(), source.assignments.end(), isType) > 1;
}

/// The declaration's assignments apart from the type: those with "!" and all others.
struct Declared {
    AssignmentMap must;
    AssignmentMap others;
};

Declared splitDeclaration(const Context& context) {
    Declared declared;
    for (const auto& [key, assignment] : context.assignments()) {
        if (!equalsIgnoringCase(key, kToolType)) {
            AssignmentMap& map =
                assignment.modifier == AssignModifier::Must ? declared.must : declared.others;
            // The value is copied as well, since it must not refer to the context, which may be
            // gone first.
            map.emplace(key, deepCopy(assignment));
        }
    }
    return declared;
}

std::unique_ptr<Matcher> makeMatcher(const ToolDeclaration& tool, const std::string& word) {
    const ToolType* type = findToolType(word);
    if (type == nullptr) {
        reportWarning(
            fmt::format("Unable to create {} tool '{}' for '{}'.", tool.origin, tool.name, word),
            {didYouMean(word, toolTypeWords())});
        return nullptr;
    }
    const Declared declared = splitDeclaration(*tool.context);
    std::unique_ptr<Matcher> matcher;
    const auto failure = failureOf(
        [&] { matcher = type->factory(CiString(tool.name), declared.must, declared.others); });
    if (failure) {
        return skip("Unable to create {} tool '{}' for '{}': {}", tool.origin, tool.name, word,
                    *failure);
    }
    return matcher ? std::move(matcher)
                   : skip("Unable to create {} tool '{}' for '{}'.", tool.origin, tool.name, word);
}

}  // namespace

std::unique_ptr<Matcher> createTool(const ToolDeclaration& tool) {
    if (!tool.context) {
        return skip("{} tool '{}' has null context. Skipping.", tool.origin, tool.name);
    }
    const Assignment* type = tool.context->find(kToolType);
    if (type == nullptr) {
        return skip("{} tool '{}' has no 'tool_type'. Skipping.", tool.origin, tool.name);
    }
    if (tool.source && typeIsGivenTwice(*tool.source)) {
        return skip("{} tool '{}' has multiple 'tool_type' assignments. Skipping.", tool.origin,
                    tool.name);
    }
    const std::string word = type->value ? type->value->toString() : std::string();
    if (word.empty()) {
        return skip("{} tool '{}' has empty 'tool_type'. Skipping.", tool.origin, tool.name);
    }
    return makeMatcher(tool, word);
}

bool addTool(Toolbox& toolbox, const ToolDeclaration& tool) {
    std::unique_ptr<Matcher> matcher = createTool(tool);
    if (!matcher) {
        return false;
    }
    if (toolbox.add(std::move(matcher)) == 1) {
        console::warning("Tool '{}' from {} overrides an earlier tool with the same name.",
                         tool.name, tool.origin);
    }
    return true;
}

}  // namespace Vesk
