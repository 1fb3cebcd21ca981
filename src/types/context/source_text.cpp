#include "types/context/source_text.h"

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

bool hasReferences(const std::string& text) {
    return text.find("${") != std::string::npos || text.find('#') != std::string::npos;
}

/// Whether such a path is relative depends on what the reference stands for.
bool beginsWithReference(const std::string& path) {
    return path.starts_with("${") || path.starts_with("#{");
}

class SourceWriter {
  public:
    SourceWriter(std::string& out, ReadBack use) : out_(out), use_(use) {}

    void value(const VeskValue& value) {
        if (const auto* path = valueAs<VeskPathString>(&value)) {
            this->path(*path);
        } else if (const auto* text = valueAs<VeskBaseString>(&value)) {
            string(*text);
        } else if (const auto* list = valueAs<VeskList>(&value)) {
            this->list(*list);
        } else if (const auto* context = valueAs<VeskContext>(&value)) {
            this->context(*context);
        } else {
            out_ += value.toDisplayString();  // integers, identifiers, the character set
        }
    }

    void assignment(const Assignment& assignment) {
        out_ += sourceText(assignment.modifier);
        out_ += assignment.name.str();
        if (assignment.value) {
            out_ += sourceText(assignment.op);
            value(*assignment.value);
        }
    }

  private:
    bool expanded() const noexcept { return use_ == ReadBack::Expanded; }

    void raw(char letter, std::string_view text, const VeskValue& value) {
        if (text.find(kRawEnd) != std::string_view::npos) {
            throwUnwritable(value);
        }
        out_ += letter;
        out_ += "\"(";
        out_ += text;
        out_ += kRawEnd;
    }

    void string(const VeskBaseString& value) {
        if (mustBeRaw(value.text, valueAs<VeskRawString>(&value) != nullptr)) {
            raw('R', value.text, value);
        } else {
            quoted(value.text);
        }
    }

    bool mustBeRaw(const std::string& text, bool isRaw) const {
        if (expanded()) {
            return isRaw && (text.find(kRawEnd) == std::string::npos || hasReferences(text));
        }
        return isRaw || text.find('"') != std::string::npos || text.ends_with('P');
    }

    /// A plain string cannot hold a double quote, but it can hold a reference to one.
    void quoted(const std::string& text) {
        out_ += '"';
        for (const char c : text) {
            if (c == '"') {
                out_ += "${ascii[34]}";
            } else {
                out_ += c;
            }
        }
        out_ += '"';
    }

    void path(const VeskPathString& value) {
        const std::string& text = value.text;
        if (value.baseDirectory.empty() || platform::isAbsolutePath(text) ||
            (expanded() && beginsWithReference(text))) {
            raw('P', text, value);
        } else {
            const auto path = value.baseDirectory / platform::pathFromUtf8(text);
            raw('P', platform::pathToUtf8(path), value);
        }
    }

    void list(const VeskList& list) {
        out_ += '[';
        const char* separator = "";
        for (const ValuePtr& item : list.items) {
            if (!item) {
                throwUnwritable(list);
            }
            out_ += separator;
            value(*item);
            separator = ", ";
        }
        out_ += ']';
    }

    void context(const VeskContext& value) {
        const auto context = value.context();
        if (!context->conditions().empty()) {
            throwUnwritable(value);
        }
        out_ += '{';
        for (const auto& [name, assignment] : context->assignments()) {
            out_ += ' ';
            this->assignment(assignment);
        }
        out_ += " }";
    }

    std::string& out_;
    const ReadBack use_;
};

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

void appendSource(std::string& out, const VeskValue& value, ReadBack use) {
    SourceWriter(out, use).value(value);
}

std::string toSourceString(const VeskValue& value) {
    std::string text;
    appendSource(text, value, ReadBack::Expanded);
    return text;
}

std::string Assignment::toSourceString() const {
    std::string text;
    SourceWriter(text, ReadBack::Expanded).assignment(*this);
    return text;
}

}  // namespace Vesk
