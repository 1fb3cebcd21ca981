#include "driver/hidden_values.h"

#include <algorithm>

#include "cache/record_fields.h"
#include "types/context/context_value.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {
namespace {

/// Shorter ones stand in too many texts, and nobody relies on them.
constexpr std::size_t kShortestSecret = 4;

}  // namespace

void HiddenValues::add(const Context& context) {
    for (const auto& [name, assignment] : context.assignments()) {
        add(assignment.value.get());
    }
}

void HiddenValues::add(const VeskValue* value) {
    if (const auto* list = valueAs<VeskList>(value)) {
        for (const ValuePtr& item : list->items) {
            add(item.get());
        }
    } else if (const auto* nested = valueAs<VeskContext>(value)) {
        add(*nested->context());
    } else if (value != nullptr) {
        std::string text = value->toString();
        if (text.size() >= kShortestSecret) {
            texts_.push_back(std::move(text));
        }
    }
}

bool HiddenValues::showIn(std::string_view text) const {
    return std::ranges::any_of(texts_, [text](const std::string& hidden) {
        return text.find(hidden) != std::string_view::npos;
    });
}

bool HiddenValues::showIn(const VeskValue* value) const {
    if (texts_.empty() || value == nullptr) {
        return false;
    }
    if (const auto* list = valueAs<VeskList>(value)) {
        return std::ranges::any_of(list->items,
                                   [this](const ValuePtr& item) { return showIn(item.get()); });
    }
    if (const auto* string = valueAs<VeskBaseString>(value)) {
        return showIn(string->text);
    }
    return showIn(value->toDisplayString());
}

Assignment HiddenValues::masked(const Assignment& assignment) const {
    if (!showIn(assignment.value.get())) {
        return assignment;
    }
    return textAssignment(assignment.name.str(), hashInstead(assignment.value->toDisplayString()));
}

std::string HiddenValues::masked(std::string text) const {
    return showIn(text) ? hashInstead(text) : std::move(text);
}

std::string HiddenValues::covered(std::string text) const {
    constexpr std::string_view kCover = "***";
    for (const std::string& hidden : texts_) {
        for (std::size_t at = text.find(hidden); at != std::string::npos;
             at = text.find(hidden, at + kCover.size())) {
            text.replace(at, hidden.size(), kCover);
        }
    }
    return text;
}

}  // namespace Vesk
