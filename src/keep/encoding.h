// Values as bytes, to be kept from run to run.
//
// What resolving would change, or what refers to something else, is not encoded: the caller has to
// do without. Equal bytes mean equal values, the places where they were written included.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "types/context/context.h"

namespace Vesk {

/// Nothing for a value that cannot be encoded.
std::optional<std::string> encoded(const std::vector<ValuePtr>& values);
std::optional<std::string> encoded(const Context& resolved);

/// Nothing for bytes that no value has been encoded to.
std::optional<std::vector<ValuePtr>> decodedValues(std::string_view bytes);

/// Null for such bytes.
std::shared_ptr<Context> decodedContext(std::string_view bytes);

}  // namespace Vesk
