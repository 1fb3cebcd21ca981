// The libraries that a program is linked with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/support/target_paths.h"

namespace Vesk {

/// Each name once, at its last place: a library must follow everything that needs it. Lists with
/// this order can be concatenated.
std::vector<std::string> atLastPlace(std::vector<std::string> names);

bool isSharedLibrary(std::string_view file) noexcept;

/// Whether an entry of LIBS is a path, not a name or an option. Either slash makes it one.
bool isLibraryPath(std::string_view entry) noexcept;

/// The libraries among the names in LIBS that belong to the project or lie in one of the
/// directories: what the linker will use, so that a change in them is noticed. "f" and "-lf" stand
/// for libf.a and its like, ":libf.a" and "-l:libf.a" for that file, and a name with a slash for a
/// path from the root. All others belong to the system.
std::vector<std::string> librariesIn(const std::vector<std::string>& directories,
                                     const std::vector<std::string>& names,
                                     const std::string& root);

/// All files that a linker of any kind may find for one of the names there.
std::vector<std::string> libraryCandidates(const std::vector<std::string>& directories,
                                           const std::vector<std::string>& names,
                                           const std::string& root);

/// Where a product in `directory` looks for the shared libraries among `libraries` at run time:
/// relative to the product (`origin`) for those of the project, by their paths for others. The
/// system's directories are left out.
std::vector<std::string> runPaths(const std::vector<std::string>& libraries,
                                  const std::string& directory, const std::string& origin,
                                  const TargetPaths& paths);

}  // namespace Vesk
