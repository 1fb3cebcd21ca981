// The variables that every target of every build sees.
#pragma once

#include <filesystem>
#include <memory>

#include "types/context/context.h"

namespace Vesk {

/// os_family ("windows", "unix"; missing on a system that is neither), year and month of the
/// local time, project_root and output_def_dir.
std::shared_ptr<Context> builtinVariables(const std::filesystem::path& projectRoot);

/// The directory under a project's root that outputs go to unless something else is said.
inline constexpr const char* kDefaultOutputDirectory = "out";

}  // namespace Vesk
