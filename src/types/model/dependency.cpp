#include "types/model/dependency.h"

#include <cctype>
#include <stdexcept>

#include "base/console.h"
#include "base/text.h"
#include "types/model/target.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

[[noreturn]] void throwInvalid(std::string_view whole, const std::string& message) {
    throw VeskException("Invalid dynamic dependency '" + std::string(whole) + "': " + message);
}

IdentifierPath parameterFrom(std::string_view piece, std::string_view whole) {
    if (piece.empty()) {
        throwInvalid(whole, "empty parameter");
    }
    IdentifierPath path;
    ParseError error;
    std::size_t end = 0;
    const bool plain = parseIdentifierPath(piece, path, error, &end) && end == piece.size() &&
                       path.segments.size() == 1 && path.segments.front().keys.empty();
    if (!plain) {
        throwInvalid(whole, "invalid parameter '" + std::string(piece) + "'");
    }
    return path;
}

std::vector<IdentifierPath> parametersFrom(std::string_view list, std::string_view whole) {
    if (trimmed(list).empty()) {
        throwInvalid(whole, "empty parameter list");
    }
    std::vector<IdentifierPath> parameters;
    while (true) {
        const std::size_t comma = list.find(',');
        parameters.push_back(parameterFrom(trimmed(list.substr(0, comma)), whole));
        if (comma == std::string_view::npos) {
            return parameters;
        }
        list.remove_prefix(comma + 1);
    }
}

/// The text of a macro's value; empty if there is no such variable.
std::string macroText(const DependencyRecord& macro, TargetContext& context) {
    try {
        return context.resolveIdentifier(macro.macro)->toString();
    } catch (const NotFoundException&) {
        return {};
    } catch (const MissingVariable&) {
        return {};
    }
}

DependencyRecord recordFor(const DependencyRecord& macro, DynamicDependency item) {
    if (!item.parameters.empty()) {
        if (macro.sourceParameter) {
            throw VeskException(
                "cannot combine source-parameterized macro with parameters from the resolved "
                "dependency value");
        }
        if (!macro.parameters.empty()) {
            throw VeskException(
                "cannot combine macro parameters with parameters from the resolved dependency "
                "value");
        }
    }
    DependencyRecord record = macro;
    record.kind = DependencyKind::Direct;
    record.reference = std::move(item.reference);
    if (!item.parameters.empty()) {
        record.parameters = std::move(item.parameters);
    }
    return record;
}

void expandMacro(const DependencyRecord& macro, TargetContext& context,
                 std::vector<DependencyRecord>& list) {
    const std::string text = macroText(macro, context);
    const std::vector<std::string> items = parseDynamicDependencies(text);
    if (items.empty()) {
        console::warning("Dynamic dependency '{}' is empty and will be skipped.",
                         macro.macro.toDisplayString());
        return;
    }
    std::vector<DynamicDependency> parsed;
    parsed.reserve(items.size());
    for (const std::string& item : items) {
        parsed.push_back(parseDynamicDependency(item, text));
    }
    for (DynamicDependency& item : parsed) {
        list.push_back(recordFor(macro, std::move(item)));
    }
    if (macro.aliasKind == AliasKind::Single && items.size() > 1) {
        throw VeskException(
            "single output alias cannot be used when a macro expands to multiple dependencies");
    }
}

}  // namespace

std::string DependencyReference::toDisplayString() const {
    return (ns.empty() ? "" : ns + "/") + (unit.empty() ? "" : unit + "::") + target;
}

DependencyReference splitDependencyString(std::string_view text) {
    const std::string whole(text);
    const std::size_t colons = whole.find("::");
    if (colons == std::string::npos) {
        if (whole.empty()) {
            throw std::runtime_error("Dependency string is empty");
        }
        return {{}, {}, whole};
    }
    const std::string prefix = whole.substr(0, colons);
    DependencyReference reference{{}, prefix, whole.substr(colons + 2)};
    if (prefix.empty() || reference.target.empty()) {
        throw std::runtime_error("Dependency string has empty prefix or target: " + whole);
    }
    const std::size_t slash = prefix.find('/');
    if (slash != std::string::npos) {
        reference.ns = prefix.substr(0, slash);
        reference.unit = prefix.substr(slash + 1);
        if (reference.ns.empty() || reference.unit.empty()) {
            throw std::runtime_error("Dependency string has empty ns or unit: " + whole);
        }
    }
    return reference;
}

std::vector<std::string> parseDynamicDependencies(std::string_view text) {
    std::vector<std::string> items;
    std::string item;
    std::size_t depth = 0;
    const auto finishItem = [&] {
        if (!item.empty()) {
            items.push_back(std::move(item));
            item.clear();
        }
    };
    for (const char c : text) {
        if (depth == 0 && std::isspace(static_cast<unsigned char>(c)) != 0) {
            finishItem();
            continue;
        }
        if (c == ')' && depth == 0) {
            throwInvalid(text, "unmatched ')'");
        }
        depth += c == '(' ? 1 : 0;
        depth -= c == ')' ? 1 : 0;
        item += c;
    }
    if (depth > 0) {
        throwInvalid(text, "unterminated parameter list");
    }
    finishItem();
    return items;
}

DynamicDependency parseDynamicDependency(std::string_view item, std::string_view whole) {
    item = trimmed(item);
    const std::size_t open = item.find('(');
    if (open == std::string_view::npos) {
        return {splitDependencyString(item), {}};
    }
    if (!item.ends_with(')')) {
        throwInvalid(whole, "unterminated parameter list");
    }
    const std::string_view name = trimmed(item.substr(0, open));
    if (name.empty()) {
        throwInvalid(whole, "empty target name");
    }
    return {splitDependencyString(name),
            parametersFrom(item.substr(open + 1, item.size() - open - 2), whole)};
}

std::vector<DependencyRecord> createDependencyList(TargetContext& context) {
    console::trace("Creating dependency list.");
    std::vector<DependencyRecord> list;
    for (const DependencyRecord& record : context.target().dependencies()) {
        if (record.kind == DependencyKind::Direct) {
            list.push_back(record);
        } else {
            expandMacro(record, context, list);
        }
    }
    return list;
}

}  // namespace Vesk
