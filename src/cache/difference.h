// Telling the user what differs between two builds of a target.
#pragma once

#include <string>

#include "cache/cache_record.h"

namespace Vesk {

/// A sentence about the first difference in the texts, in the order variables, dependencies, files,
/// environment, commands. Empty when they are equal.
std::string firstDifference(const RecordText::Layout& last, const CacheRequest& now);

}  // namespace Vesk
