// Files that flags name.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tools/support/target_paths.h"

namespace Vesk {

/// The files that commands read because the flags in these variables name them: path values, words
/// that are not options, and arguments of options that are known to read a file, such as
/// "@args.rsp", "-Wl,--version-script=lib.map", "-T app.ld", "/DEF:lib.def". Only files that exist.
/// Relative names start from the root, where commands run.
std::vector<std::string> flagFiles(const TargetContext& target, const TargetPaths& paths,
                                   std::initializer_list<const char*> variables);

}  // namespace Vesk
