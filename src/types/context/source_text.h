// Values as source text, for callers that write a lot of it. Otherwise use
// `Assignment::toSourceString`.
#pragma once

#include <cstdint>
#include <string>

#include "types/values/value.h"

namespace Vesk {

/// What happens to a value when it is read back from its source text.
enum class ReadBack : std::uint8_t {
    Expanded,  ///< as in a unit file: a reference can stand for what a literal cannot hold
    AsItIs,    ///< as in the cache file, whose values are final; no plain string ends in a P there:
               ///< with the quote it would read as the start of a path
};

/// Appends the value in the form that the grammar reads back. Throws as
/// `Assignment::toSourceString` does; the text appended by then is useless.
void appendSource(std::string& out, const VeskValue& value, ReadBack use);

}  // namespace Vesk
