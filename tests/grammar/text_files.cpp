#include "grammar/text_files.h"

#include <algorithm>
#include <fmt/format.h>
#include <vector>

#include "base/text.h"
#include "platform/files.h"

namespace Vesk {

namespace {

constexpr const char* kConditionOperators[] = {"", " = ", " != ", " < ", " > ", ""};
constexpr const char* kAliases[] = {"", " => ", " +> "};

std::string describe(const Condition& condition, std::size_t indent) {
    std::string text =
        fmt::format("{}if {}{}", std::string(indent, ' '), toSourceString(*condition.left),
                    kConditionOperators[static_cast<std::size_t>(condition.op)]);
    if (condition.right) {
        text += toSourceString(*condition.right);
    }
    return text + fmt::format(" @{}\n", condition.place.line) +
           describe(*condition.body, indent + 2);
}

std::string describe(const DependencyRecord& record) {
    std::string text = record.merge ? "+" : "";
    text += record.kind == DependencyKind::Macro ? "@" + record.macro.toDisplayString()
                                                 : record.reference.toDisplayString();
    std::vector<std::string> parameters;
    if (record.sourceParameter) {
        parameters.push_back(".");
    }
    for (const IdentifierPath& parameter : record.parameters) {
        parameters.push_back(parameter.toDisplayString());
    }
    if (!parameters.empty()) {
        text += "(" + joined(parameters, ", ") + ")";
    }
    return text + kAliases[static_cast<std::size_t>(record.aliasKind)] + record.alias +
           fmt::format(" @{}", record.place.line);
}

}  // namespace

std::filesystem::path LoaderTest::write(std::string_view name, std::string_view bytes) const {
    test::write(directory_ / name, bytes);
    return directory_ / name;
}

std::string LoaderTest::readable(std::string text) const {
    std::replace(text.begin(), text.end(), '\\', '/');
    for (const auto& path :
         {directory_.path(), std::filesystem::weakly_canonical(directory_.path())}) {
        std::string name = platform::pathToUtf8(path);
        std::replace(name.begin(), name.end(), '\\', '/');
        for (auto at = text.find(name); at != std::string::npos; at = text.find(name)) {
            text.replace(at, name.size(), "DIR");
        }
    }
    return text;
}

std::string describe(const ContextTemplate& context, std::size_t indent) {
    std::string text;
    for (const Assignment& assignment : context.assignments) {
        text += fmt::format("{}{} @{}\n", std::string(indent, ' '), assignment.toSourceString(),
                            assignment.place.line);
    }
    for (const Condition& condition : context.conditions) {
        text += describe(condition, indent);
    }
    return text;
}

std::string describe(const Unit& unit) {
    std::string text =
        fmt::format("unit '{}'{}\n", unit.name, unit.nameDeclared ? " declared" : "");
    for (const auto& target : unit.targets) {
        text += fmt::format("{}({}) @{}\n", target->name, joined(target->parameters, ", "),
                            target->line);
        for (const DependencyRecord& record : target->dependencies()) {
            text += "  : " + describe(record) + "\n";
        }
        text += describe(target->body(), 2);
    }
    return text;
}

}  // namespace Vesk
