#include "types/value_size.h"

#include <fmt/format.h>

#include "base/interruption.h"
#include "types/context.h"
#include "types/context_value.h"
#include "types/errors.h"
#include "types/list_value.h"
#include "types/string_values.h"

namespace Vesk {
namespace {

[[noreturn]] void throwTooLarge(const std::string& text) {
    VeskException error(text);
    error.addNote("does it refer to itself through other variables?");
    throw error;
}

}  // namespace

void ValueSize::addBytes(std::size_t bytes) {
    bytes_ += bytes;
    checkTextSize(bytes_);
}

void ValueSize::add(const VeskValue& value, std::size_t depth) {
    stopIfInterrupted();
    addBytes(kElementBytes);
    if (depth > kMaxValueNesting) {
        throwTooLarge(fmt::format(
            "A value has more than {} lists and contexts nested in each other.", kMaxValueNesting));
    }
    if (const auto* string = valueAs<VeskBaseString>(&value)) {
        addBytes(string->text.size());
    } else if (const auto* list = valueAs<VeskList>(&value)) {
        for (const ValuePtr& item : list->items) {
            if (item) {
                add(*item, depth + 1);
            }
        }
    } else if (const auto* context = valueAs<VeskContext>(&value); context && context->owns()) {
        for (const auto& [name, assignment] : context->context()->assignments()) {
            addBytes(name.str().size());
            if (assignment.value) {
                add(*assignment.value, depth + 1);
            }
        }
    }
}

void checkTextSize(std::size_t bytes) {
    if (bytes > kMaxValueBytes) {
        throwTooLarge(fmt::format("A value grows beyond {} MiB.",
                                  kMaxValueBytes / (std::size_t{1024} * 1024)));
    }
}

void checkSize(const VeskValue& value) {
    ValueSize().add(value);
}

}  // namespace Vesk
