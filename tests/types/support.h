// Short ways to write values and contexts down, and to say what came of an operation.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "types/context/context.h"
#include "types/context/context_value.h"
#include "types/values/errors.h"
#include "types/values/identifier_value.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk::test {

inline ValuePtr str(std::string text) {
    return std::make_shared<VeskString>(std::move(text));
}
inline ValuePtr raw(std::string text) {
    return std::make_shared<VeskRawString>(std::move(text));
}
inline ValuePtr path(std::string text, std::filesystem::path base = {}) {
    return std::make_shared<VeskPathString>(std::move(text), std::move(base));
}
inline ValuePtr num(std::int32_t value) {
    return std::make_shared<VeskInt>(value);
}
inline ValuePtr list(std::vector<ValuePtr> items) {
    return std::make_shared<VeskList>(std::move(items));
}
inline ValuePtr ascii() {
    return std::make_shared<VeskCharSet>();
}
inline ValuePtr id(std::string_view name) {
    return std::make_shared<VeskIdentifier>(identifierPathFrom(name));
}

using Assignments = std::vector<Assignment>;

inline Assignment make(const char* name, AssignOperator op, ValuePtr value,
                       AssignModifier modifier = AssignModifier::None) {
    Assignment assignment;
    assignment.name = name;
    assignment.op = op;
    assignment.value = std::move(value);
    assignment.modifier = modifier;
    return assignment;
}
inline Assignment set(const char* name, ValuePtr value, AssignModifier m = AssignModifier::None) {
    return make(name, AssignOperator::Assign, std::move(value), m);
}
inline Assignment plus(const char* name, ValuePtr value, AssignModifier m = AssignModifier::None) {
    return make(name, AssignOperator::Append, std::move(value), m);
}
inline Assignment maybe(const char* name, ValuePtr value, AssignModifier m = AssignModifier::None) {
    return make(name, AssignOperator::AssignEmpty, std::move(value), m);
}
inline Assignment bare(const char* name, AssignModifier m = AssignModifier::None) {
    return make(name, AssignOperator::None, nullptr, m);
}

/// A context filled as a file fills it; the assignments stay as they are.
inline std::shared_ptr<Context> contextOf(const Assignments& assignments) {
    ContextTemplate body;
    body.assignments = assignments;
    return body.instantiate();
}
inline ValuePtr block(const Assignments& assignments) {
    return std::make_shared<VeskContext>(contextOf(assignments));
}

/// Every assignment as source text, modifiers included, joined by "; ".
inline std::string sourceOf(const Context& context) {
    std::string text;
    for (const auto& [name, assignment] : context.assignments()) {
        text += (text.empty() ? "" : "; ") + assignment.toSourceString();
    }
    return text;
}

inline std::string shown(const ValuePtr& value) {
    return value ? value->typeName() + " " + value->toDisplayString() : "nothing";
}
inline std::string shown(bool value) {
    return value ? "true" : "false";
}
inline std::string shown(const std::string& text) {
    return text;
}

template <class Kind>
bool is(const VeskException& error) {
    return dynamic_cast<const Kind*>(&error) != nullptr;
}

inline std::string kindOf(const VeskException& error) {
    const std::pair<const char*, bool> kinds[] = {
        {"BadConversion", is<BadConversion>(error)},
        {"BadOperation", is<BadOperation>(error)},
        {"IndexException", is<IndexException>(error)},
        {"InternalError", is<InternalError>(error)},
        {"NotFoundException", is<NotFoundException>(error)},
        {"LoopFoundException", is<LoopFoundException>(error)},
        {"IdentifierError", is<IdentifierError>(error)},
        {"AssignmentException", is<AssignmentException>(error)},
        {"NotAContext", is<NotAContext>(error)},
        {"ParseError", is<ParseError>(error)},
    };
    for (const auto& [name, matches] : kinds) {
        if (matches) {
            return name;
        }
    }
    return "VeskException";
}

/// What `run` gives, as text; for an exception its class and whole report.
template <class Run>
std::string outcome(Run&& run) {
    try {
        return shown(run());
    } catch (const VeskException& error) {
        return kindOf(error) + ": " + error.report();
    } catch (const CircularReference& error) {
        return "CircularReference: " + reportOf(error);
    } catch (const std::out_of_range& error) {
        return "out_of_range: " + reportOf(error);
    } catch (const std::invalid_argument& error) {
        return "invalid_argument: " + reportOf(error);
    } catch (const std::runtime_error& error) {
        return "runtime_error: " + reportOf(error);
    }
}

/// The same for an operation without a result: "done".
template <class Run>
std::string outcomeOf(Run&& run) {
    return outcome([&run] {
        run();
        return std::string("done");
    });
}

}  // namespace Vesk::test
