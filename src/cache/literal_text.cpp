#include "cache/literal_text.h"

#include <algorithm>

#include "base/attempt.h"
#include "grammar/literals.h"
#include "types/context/source_text.h"
#include "types/values/list_value.h"
#include "types/values/simple_values.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

constexpr std::string_view kRawEnd = ")\"";

class PlainReader {
  public:
    explicit PlainReader(std::string_view text) : text_(text) {}

    std::optional<Assignment> assignment() {
        Assignment result;
        takeModifier(result.modifier);
        result.name = CiString(std::string(takeName()));
        if (result.name.str().empty() || !takeOperator(result.op)) {
            return std::nullopt;
        }
        result.value = value();
        return result.value && text_.empty() ? std::optional(std::move(result)) : std::nullopt;
    }

  private:
    bool take(std::string_view expected) {
        const bool found = text_.starts_with(expected);
        text_.remove_prefix(found ? expected.size() : 0);
        return found;
    }

    void takeModifier(AssignModifier& modifier) {
        for (const auto candidate :
             {AssignModifier::Output, AssignModifier::Must, AssignModifier::Hint}) {
            if (take(sourceText(candidate))) {
                modifier = candidate;
                return;
            }
        }
    }

    std::string_view takeName() {
        const auto isNameCharacter = [](char c) {
            return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                   c == '_';
        };
        const auto end = std::ranges::find_if_not(text_, isNameCharacter);
        const auto length = static_cast<std::size_t>(end - text_.begin());
        const std::string_view name = text_.substr(0, length);
        text_.remove_prefix(length);
        return !name.empty() && (name.front() < '0' || name.front() > '9') ? name
                                                                           : std::string_view();
    }

    bool takeOperator(AssignOperator& op) {
        for (const auto candidate :
             {AssignOperator::Assign, AssignOperator::Append, AssignOperator::AssignEmpty}) {
            if (take(sourceText(candidate))) {
                op = candidate;
                return true;
            }
        }
        return false;
    }

    /// The text up to `end`; takes `end` as well.
    std::optional<std::string> upTo(std::string_view end) {
        const std::size_t at = text_.find(end);
        if (at == std::string_view::npos) {
            return std::nullopt;
        }
        std::string content(text_.substr(0, at));
        text_.remove_prefix(at + end.size());
        return content;
    }

    template <class String, class... Arguments>
    ValuePtr string(std::string_view end, Arguments&&... arguments) {
        auto content = upTo(end);
        return content ? std::make_shared<String>(std::move(*content),
                                                  std::forward<Arguments>(arguments)...)
                       : nullptr;
    }

    ValuePtr value() {
        if (take("P\"(")) {
            return string<VeskPathString>(kRawEnd, std::filesystem::path());
        }
        if (take("R\"(")) {
            return string<VeskRawString>(kRawEnd);
        }
        if (take("\"")) {
            return string<VeskString>("\"");
        }
        return take("[") ? list() : integer();
    }

    ValuePtr list() {
        auto result = std::make_shared<VeskList>();
        while (!take("]")) {
            if (!result->items.empty() && !take(", ")) {
                return nullptr;
            }
            if (text_.starts_with('[')) {
                return nullptr;  // lists in lists are left to the parser, which counts how deep
                                 // they go
            }
            result->items.push_back(value());
            if (!result->items.back()) {
                return nullptr;
            }
        }
        return result;
    }

    ValuePtr integer() {
        const std::size_t length = std::min(text_.find_first_not_of("-0123456789"), text_.size());
        const auto number = integerLiteral(text_.substr(0, length));
        text_.remove_prefix(length);
        return number ? std::make_shared<VeskInt>(*number) : nullptr;
    }

    std::string_view text_;
};

}  // namespace

bool appendPlainAssignment(std::string& out, const Assignment& assignment) {
    if (!assignment.value) {
        return false;
    }
    out += sourceText(assignment.modifier);
    out += assignment.name.str();
    out += sourceText(assignment.op);
    return succeeds([&] { appendSource(out, *assignment.value, ReadBack::AsItIs); });
}

std::optional<Assignment> readPlainAssignment(std::string_view text) {
    return PlainReader(text).assignment();
}

}  // namespace Vesk
