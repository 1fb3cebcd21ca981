// Resource scripts: what they are made of.
#pragma once

#include <string>
#include <vector>

namespace Vesk {

/// The files that a resource script names, and those that these name in turn: headers, icons,
/// manifests. The compiler for resources does not tell them. A name is looked for in the directory
/// of the file that has it, then in `directories`; what is in none of them, as the system's
/// headers, is left out. A script that cannot be read names nothing.
std::vector<std::string> filesOfResourceScript(const std::string& script,
                                               const std::vector<std::string>& directories);

}  // namespace Vesk
