// The libraries that a program is linked with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/support/target_paths.h"

namespace Vesk {

/// Each name once, at its last place: a library must follow all that need it, and lists in which
/// that is so can then be strung together.
std::vector<std::string> atLastPlace(std::vector<std::string> names);

bool isSharedLibrary(std::string_view file) noexcept;

/// The libraries of the names in LIBS that are a part of the project or lie in one of the
/// directories: what the linker will take, so that a change of it is noticed. "f" and "-lf" are
/// libf.a and its like, ":libf.a" and "-l:libf.a" that file, and a name with a slash a path from
/// the root. Others belong to the system.
std::vector<std::string> librariesIn(const std::vector<std::string>& directories,
                                     const std::vector<std::string>& names,
                                     const std::string& root);

/// All files that a linker of any kind may take for one of the names there.
std::vector<std::string> libraryCandidates(const std::vector<std::string>& directories,
                                           const std::vector<std::string>& names);

/// Where a product in `directory` looks for the shared libraries among `libraries` when it runs: as
/// seen from the product, `origin`, for those of the project, by their paths for others. Without
/// the directories of the system.
std::vector<std::string> runPaths(const std::vector<std::string>& libraries,
                                  const std::string& directory, const std::string& origin,
                                  const TargetPaths& paths);

}  // namespace Vesk
