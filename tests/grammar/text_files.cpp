#include "grammar/text_files.h"

#include <algorithm>
#include <fmt/format.h>
#include <random>
#include <system_error>
#include <vector>

#include "base/text.h"
#include "platform/files.h"
#include "types/context_value.h"
#include "types/identifier_value.h"
#include "types/list_value.h"
#include "types/simple_values.h"
#include "types/string_values.h"

namespace Vesk {

namespace {

constexpr const char* kModifiers[] = {"", "^", "!", "?"};
constexpr const char* kOperators[] = {"", " = ", " += ", " ?= ", ""};
constexpr const char* kConditionOperators[] = {"", " = ", " != ", " < ", " > ", ""};
constexpr const char* kAliases[] = {"", " => ", " +> "};

template <class Code, std::size_t count>
std::string nameOf(Code code, const char* const (&names)[count]) {
    return names[static_cast<std::size_t>(code)];
}

std::string describe(const Condition& condition, std::size_t indent) {
    std::string text = fmt::format("{}if {}{}", std::string(indent, ' '), describe(*condition.left),
                                   nameOf(condition.op, kConditionOperators));
    if (condition.right) {
        text += describe(*condition.right);
    }
    return text + fmt::format(" @{}\n", condition.line) + describe(*condition.body, indent + 2);
}

}  // namespace

LoaderTest::LoaderTest() {
    const auto name = fmt::format("vesk gr\u00e4mmar {:08x}", std::random_device{}());
    directory_ = std::filesystem::weakly_canonical(std::filesystem::temp_directory_path()) /
                 platform::pathFromUtf8(name);
    std::filesystem::create_directories(directory_);
}

LoaderTest::~LoaderTest() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

std::filesystem::path LoaderTest::write(std::string_view name, std::string_view bytes) const {
    std::filesystem::path path = directory_ / platform::pathFromUtf8(name);
    std::error_code error;
    EXPECT_TRUE(platform::writeWholeFile(path, bytes, platform::Append::no, error))
        << error.message();
    return path;
}

std::string LoaderTest::readable(std::string text) const {
    std::replace(text.begin(), text.end(), '\\', '/');
    std::string directory = platform::pathToUtf8(directory_);
    std::replace(directory.begin(), directory.end(), '\\', '/');
    for (auto at = text.find(directory); at != std::string::npos; at = text.find(directory)) {
        text.replace(at, directory.size(), "DIR");
    }
    return text;
}

std::string describe(const VeskValue& value) {
    if (const auto* list = dynamic_cast<const VeskList*>(&value)) {
        std::vector<std::string> items;
        for (const ValuePtr& item : list->items) {
            items.push_back(describe(*item));
        }
        return "[" + joined(items, ", ") + "]";
    }
    if (const auto* path = dynamic_cast<const VeskPathString*>(&value)) {
        return fmt::format("P\"{}\" in {}", path->text, platform::pathToUtf8(path->baseDirectory));
    }
    if (const auto* string = dynamic_cast<const VeskString*>(&value)) {
        return "S\"" + string->text + "\"";
    }
    if (const auto* raw = dynamic_cast<const VeskRawString*>(&value)) {
        return "R\"" + raw->text + "\"";
    }
    if (dynamic_cast<const VeskIdentifier*>(&value) != nullptr) {
        return "ref(" + value.toDisplayString() + ")";
    }
    if (const auto* context = dynamic_cast<const VeskContext*>(&value)) {
        return describe(*context->context());
    }
    return value.toString();
}

std::string describe(const Context& context) {
    std::string text = "{";
    for (const auto& [name, assignment] : context.assignments()) {
        text += " " + describe(assignment);
    }
    return text + fmt::format(" }}+{}", context.conditions().size());
}

std::string describe(const Assignment& assignment) {
    std::string text = nameOf(assignment.modifier, kModifiers) + assignment.name.str() +
                       nameOf(assignment.op, kOperators);
    if (assignment.value) {
        text += describe(*assignment.value);
    }
    return text;
}

std::string describe(const ContextTemplate& context, std::size_t indent) {
    std::string text;
    for (const Assignment& assignment : context.assignments) {
        text += fmt::format("{}{} @{}\n", std::string(indent, ' '), describe(assignment),
                            assignment.line);
    }
    for (const Condition& condition : context.conditions) {
        text += describe(condition, indent);
    }
    return text;
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
    return text + nameOf(record.aliasKind, kAliases) + record.alias +
           fmt::format(" @{}", record.line);
}

std::string describe(const Unit& unit) {
    std::string text =
        fmt::format("unit '{}'{}\n", unit.name, unit.nameDeclared ? " declared" : "");
    for (const auto& target : unit.targets) {
        text += fmt::format("{}({}) @{}\n", target->name, joined(target->parameters, ", "),
                            target->line);
        for (const DependencyRecord& record : target->dependencies) {
            text += "  : " + describe(record) + "\n";
        }
        text += describe(target->body, 2);
    }
    return text;
}

}  // namespace Vesk
