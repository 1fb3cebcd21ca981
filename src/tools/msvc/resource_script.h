// Resource scripts and the files that they name.
#pragma once

#include <string>
#include <vector>

namespace Vesk {

/// The files that a resource script names, and those that these name in turn: headers, icons,
/// manifests. The resource compiler does not report them. A name is looked up in the directory of
/// the file that contains it, then in `directories`. A name found in none of them, such as a system
/// header, is left out. A script that cannot be read names nothing.
std::vector<std::string> filesOfResourceScript(const std::string& script,
                                               const std::vector<std::string>& directories);

}  // namespace Vesk
