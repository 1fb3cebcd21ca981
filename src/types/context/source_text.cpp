// Values and assignments as source text: what the grammar reads back to an equal value.

#include "platform/files.h"
#include "types/context/assignment.h"
#include "types/context/context.h"
#include "types/context/context_value.h"
#include "types/values/errors.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

constexpr std::string_view kRawEnd = ")\"";

[[noreturn]] void throwUnwritable(const VeskValue& value) {
    throw VeskException("The value " + value.toDisplayString() +
                        " cannot be written in a file: no literal can hold its text.");
}

/// A plain string cannot hold a double quote, but a reference to one.
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"') {
            result += "${ascii[34]}";
        } else {
            result += c;
        }
    }
    return result + "\"";
}

bool hasReferences(const std::string& text) {
    return text.find("${") != std::string::npos || text.find('#') != std::string::npos;
}

std::string rawText(const VeskRawString& value) {
    if (value.text.find(kRawEnd) == std::string::npos) {
        return "R\"(" + value.text + std::string(kRawEnd);
    }
    if (hasReferences(value.text)) {
        throwUnwritable(value);
    }
    return quoted(value.text);
}

/// Only what the reference stands for tells whether such a path is relative.
bool beginsWithReference(const std::string& path) {
    return path.starts_with("${") || path.starts_with("#{");
}

std::string pathText(const VeskPathString& value) {
    std::string path = value.text;
    if (!value.baseDirectory.empty() && !platform::isAbsolutePath(path) &&
        !beginsWithReference(path)) {
        path = platform::pathToUtf8(value.baseDirectory / platform::pathFromUtf8(value.text));
    }
    if (path.find(kRawEnd) != std::string::npos) {
        throwUnwritable(value);
    }
    return "P\"(" + path + std::string(kRawEnd);
}

std::string listText(const VeskList& list) {
    std::string text = "[";
    for (const ValuePtr& item : list.items) {
        if (!item) {
            throwUnwritable(list);
        }
        text += (text.size() > 1 ? ", " : "") + toSourceString(*item);
    }
    return text + "]";
}

std::string contextText(const VeskContext& value) {
    const auto context = value.context();
    if (!context->conditions().empty()) {
        throwUnwritable(value);
    }
    std::string text = "{";
    for (const auto& [name, assignment] : context->assignments()) {
        text += " " + assignment.toSourceString();
    }
    return text + " }";
}

}  // namespace

std::string_view sourceText(AssignModifier modifier) {
    switch (modifier) {
        case AssignModifier::Output:
            return "^";
        case AssignModifier::Must:
            return "!";
        case AssignModifier::Hint:
            return "?";
        case AssignModifier::None:
            break;
    }
    return "";
}

std::string_view sourceText(AssignOperator op) {
    switch (op) {
        case AssignOperator::Append:
            return " += ";
        case AssignOperator::AssignEmpty:
            return " ?= ";
        default:
            return " = ";
    }
}

std::string toSourceString(const VeskValue& value) {
    if (const auto* path = valueAs<VeskPathString>(&value)) {
        return pathText(*path);
    }
    if (const auto* raw = valueAs<VeskRawString>(&value)) {
        return rawText(*raw);
    }
    if (const auto* string = valueAs<VeskBaseString>(&value)) {
        return quoted(string->text);
    }
    if (const auto* list = valueAs<VeskList>(&value)) {
        return listText(*list);
    }
    if (const auto* context = valueAs<VeskContext>(&value)) {
        return contextText(*context);
    }
    return value.toDisplayString();  // integers, identifiers, the character set
}

std::string Assignment::toSourceString() const {
    std::string text(sourceText(modifier));
    text += name.str();
    if (value) {
        text += sourceText(op);
        text += Vesk::toSourceString(*value);
    }
    return text;
}

}  // namespace Vesk
