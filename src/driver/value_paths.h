// The files that values name.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cache/tracked_path.h"
#include "types/context/context.h"

namespace Vesk {

using PathSink = std::function<void(std::string)>;

/// Gives `take` every file that path values name, as the cache tracks it: that of the value itself,
/// or those in a list or in a nested context. Of a context that somebody else owns, such as that of
/// a dependant, nothing. The value may be null.
void eachPath(const VeskValue* value, const PathSink& take);

/// The files that an assignment names, in its order.
std::vector<std::string> pathsIn(const Assignment& assignment);
void appendPaths(std::vector<std::string>& files, const Assignment& assignment);

/// The files that a target's variables name, outputs of its dependencies included and its own left
/// out. Sorted; each once.
std::vector<std::string> filesNamedBy(const Context& target);

/// The files of a target's output, without those that the target was given under the same name and
/// only hands on, as a library does with the libraries that it needs: others make them.
void eachPathMade(const Assignment& output, const Context& target, const PathSink& take);

/// The assignment with every path below the root written as seen from there.
Assignment relativeTo(const TrackingRoot& root, const Assignment& assignment);

void sortUnique(std::vector<std::string>& files);

}  // namespace Vesk
