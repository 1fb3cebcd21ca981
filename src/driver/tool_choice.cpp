#include "driver/tool_choice.h"

#include "base/attempt.h"
#include "base/console.h"
#include "base/text.h"
#include "driver/build_errors.h"
#include "driver/mistyped_names.h"
#include "tools/tool_registry.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

/// Gives the compared variables their final values. One that does not resolve yet is replaced by
/// its own text, which no tool's value equals by accident.
void resolveCompared(Context& trial, const Toolbox& toolbox) {
    for (const CiString& name : toolbox.comparedNames()) {
        Assignment* assignment = trial.find(name);
        if (assignment == nullptr || !assignment->value) {
            continue;
        }
        if (!succeeds([&] { assignment->value = trial.valueOfVariable(name); })) {
            assignment->value = std::make_shared<VeskRawString>(assignment->value->toString());
        }
        assignment->state = ResolveState::Resolved;
    }
}

/// "toolchain_name 'gccc'", of what the target asks of a tool.
std::vector<std::string> wishes(const Context& target, const Toolbox& declaredTools) {
    std::vector<std::string> texts;
    for (const CiString& name : declaredTools.comparedNames()) {
        const Assignment* const assignment = target.find(name);
        if (assignment != nullptr && assignment->value) {
            texts.push_back(name.str() + " '" + assignment->value->toString() + "'");
        }
    }
    return texts;
}

/// "GCC 12.2.0 for x86_64-linux-gnu".
std::string toolchainTitle(const Matcher& tool) {
    const std::string name = textIn(tool.declaredSettings(), "toolchain_name");
    const std::string machine = textIn(tool.declaredSettings(), "toolchain_target");
    return (name.empty() ? tool.name().str() : name) +
           (machine.empty() || name.ends_with(machine) ? "" : " for " + machine);
}

std::vector<std::string> toolchainTitles(const Toolbox& declaredTools) {
    std::vector<std::string> titles;
    for (const Matcher* tool : declaredTools.tools()) {
        const ToolType* const type = findToolType(tool->typeWord());
        if (type != nullptr && type->isToolchain()) {
            titles.push_back(toolchainTitle(*tool));
        }
    }
    return titles;
}

[[noreturn]] void throwNoToolchain(const std::string& text, const Context& target,
                                   const Toolbox& declaredTools) {
    const std::vector<std::string> titles = toolchainTitles(declaredTools);
    const std::string asked =
        titles.empty() ? std::string() : joined(wishes(target, declaredTools), ", ");
    NoToolchain error(text, asked);
    error.addNote(
        "no registered toolchain fits it; vesk --find-compilers registers those of "
        "this machine");
    error.addNote(asked.empty() ? "" : "it asks for " + asked);
    error.addNote(titles.empty() ? "" : "registered are " + joined(titles, ", "));
    throw error;
}

[[noreturn]] void throwNoTool(const std::string& displayName, const Context& target,
                              const Toolbox& declaredTools) {
    const std::string text = "No tool to build " + displayName;
    if (namesToolchainSources(target)) {
        throwNoToolchain(text, target, declaredTools);
    }
    VeskException error(text);
    if (const std::string mistyped = mistypedSource(target); !mistyped.empty()) {
        error.addNote("no tool is chosen by " + mistyped);
    }
    error.addNote(
        "a target says what it is built with: 'cmdline' or 'pwsh' for commands, 'WRITE_FILE' with "
        "'FILENAME' and 'TEXT' for a file, 'NO_TOOL' for nothing, or the variables that a declared "
        "tool needs");
    throw error;
}

template <class... Args>
void reportLine(fmt::format_string<Args...> format, Args&&... args) {
    console::message(console::level::kDetail, console::colour::kReport, format,
                     std::forward<Args>(args)...);
}

}  // namespace

ToolChoice chooseTool(Context& trial, const std::string& displayName, const Toolbox& staticTools,
                      const Toolbox& declaredTools) {
    resolveCompared(trial, staticTools);
    resolveCompared(trial, declaredTools);
    const Selection fromStatic = staticTools.select(trial);
    const Selection fromDeclared = declaredTools.select(trial);
    const Selection& best = betterOf(fromStatic, fromDeclared);
    if (best.matcher == nullptr) {
        throwNoTool(displayName, trial, declaredTools);
    }
    console::message(console::level::kDetail, console::colour::kNormal,
                     "Best registered tool: {}, score: {}", best.matcher->name(), best.score);
    return {best.matcher, best.score, best.result, best.matcher->createBuilder(trial)};
}

void reportToolChoice(const ToolChoice& choice) {
    if (!console::enabled(console::level::kDetail)) {
        return;
    }
    reportLine("Tool selection");
    reportLine("--------------");
    reportLine("Registered : {}", choice.tool->name());
    reportLine("Tool       : {}", choice.tool->description());
    reportLine("Reason     :");
    bool anyMatch = false;
    for (const auto& [name, kind] : choice.report.matches) {
        if (kind != MatchKind::NoMatch) {
            reportLine("  - {} {}", name,
                       kind == MatchKind::ExactMatch ? "full match" : "partial match");
            anyMatch = true;
        }
    }
    if (!anyMatch) {
        reportLine("  - no matched variables");
    }
}

}  // namespace Vesk
