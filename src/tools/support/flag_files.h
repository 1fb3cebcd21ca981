// Files that flags name.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tools/support/target_paths.h"

namespace Vesk {

/// The files that commands read because the flags in these variables name them: path values, words
/// that are no options, and what is given to the options that are known to take a file to read, as
/// in "@args.rsp", "-Wl,--version-script=lib.map", "-T app.ld", "/DEF:lib.def". Only those that are
/// there. Relative names start from the root, where commands run.
std::vector<std::string> flagFiles(const TargetContext& target, const TargetPaths& paths,
                                   std::initializer_list<const char*> variables);

}  // namespace Vesk
