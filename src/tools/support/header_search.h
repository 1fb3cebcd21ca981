// Where a compiler will look for headers.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "run/recipe.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// From the options among the flags, in the forms of all compilers, and from INCLUDE_DIRS and
/// SYSTEM_INCLUDE_DIRS, which commands give after them and before `furtherFlags`. Null if there are
/// no directories.
std::shared_ptr<const HeaderSearch> headerSearch(const TargetContext& target,
                                                 const TargetPaths& paths,
                                                 std::initializer_list<const char*> flagVariables,
                                                 const std::vector<std::string>& furtherFlags = {});

}  // namespace Vesk
