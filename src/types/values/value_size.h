// How large values may get.
//
// One limit holds for everything that grows: texts, lists and nested contexts. It is checked while
// a value grows, so a value that refers to itself, or doubles at each of forty levels, ends in an
// error instead of exhausting memory.
#pragma once

#include <cstddef>

#include "types/values/value.h"

namespace Vesk {

/// The limit for a value, and for everything resolved in one context: the bytes of its texts plus
/// kElementBytes for each element or variable. Shared parts count each time they occur.
inline constexpr std::size_t kMaxValueBytes = std::size_t{64} * 1024 * 1024;
inline constexpr std::size_t kElementBytes = 64;

/// Lists and contexts may be nested this deep.
inline constexpr std::size_t kMaxValueNesting = 1000;

/// Adds up the size of a growing value. Each addition throws VeskException when the limit is
/// passed, and Interrupted when the user has asked to stop.
class ValueSize {
  public:
    void addBytes(std::size_t bytes);

    /// Adds the value as an element, with everything it holds. A context that it merely refers to
    /// counts as one element.
    void add(const VeskValue& value);

  private:
    std::size_t bytes_ = 0;
    std::size_t depth_ = 0;  ///< of the value that is being added
};

/// Throws VeskException if a text of this many bytes is beyond the limit.
void checkTextSize(std::size_t bytes);

/// Throws VeskException if the value is beyond the limit.
void checkSize(const VeskValue& value);

}  // namespace Vesk
