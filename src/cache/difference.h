// Tells the user what differs between two builds of a target.
#pragma once

#include <string>
#include <string_view>

#include "cache/cache_record.h"

namespace Vesk {

/// Whether the inputs of a part, or environments, are the same. A text equals its hash: whether a
/// text is hidden depends on what else was on the command line.
bool sameInputs(std::string_view last, std::string_view now);
bool sameEnvironment(std::string_view last, std::string_view now);

/// Where a request differs from a record.
struct Difference {
    std::string text;    ///< a sentence; empty: they are equal
    std::string name;    ///< what has another value, if that is it
    std::string before;  ///< its values; long ones are cut
    std::string now;
};

/// The first difference in the texts, in the order variables, dependencies, files, environment,
/// commands.
Difference firstDifference(const RecordText::Layout& last, const CacheRequest& now);

}  // namespace Vesk
