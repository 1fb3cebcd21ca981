// How large values may get.
//
// One limit holds for everything that grows: texts, lists and nested contexts. It is checked while
// a value grows, so that what refers to itself, or doubles at each of forty levels, ends in an
// error instead of in exhausted memory.
#pragma once

#include <cstddef>

#include "types/values/value.h"

namespace Vesk {

/// A value, and all that is resolved in one context, may take this much: the bytes of its texts,
/// and kElementBytes for each element or variable. What is shared counts each time it occurs.
inline constexpr std::size_t kMaxValueBytes = std::size_t{64} * 1024 * 1024;
inline constexpr std::size_t kElementBytes = 64;

/// Lists and contexts may be nested this deep in each other.
inline constexpr std::size_t kMaxValueNesting = 1000;

/// Adds up what a growing value takes. Each addition throws VeskException when the limit is passed,
/// and Interrupted when the user has asked to stop.
class ValueSize {
  public:
    void addBytes(std::size_t bytes);

    /// The value as an element: with what it holds, all the way down. A context that it merely
    /// refers to counts as one element.
    void add(const VeskValue& value);

  private:
    std::size_t bytes_ = 0;
    std::size_t depth_ = 0;  ///< of the value that is being added
};

/// Throws VeskException for a text of so many bytes when it is beyond the limit.
void checkTextSize(std::size_t bytes);

/// Throws VeskException for a value beyond the limit.
void checkSize(const VeskValue& value);

}  // namespace Vesk
