// One command to run, and what makes its result worth keeping.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "types/assignment.h"

namespace Vesk {

/// A value of `Recipe::shell`; every other one than `kPowershell` is the command interpreter.
namespace shell {
inline constexpr std::uint32_t kInterpreter = 0;
inline constexpr std::uint32_t kPowershell = 1;
}  // namespace shell

/// Something a recipe reads, and what it makes of it on the way to its outputs: a source and its
/// object file.
struct RecipeInput {
    Assignment assignment;
    std::optional<Assignment> intermediate;
};

/// Made by a builder, run by the driver, kept in the cache.
struct Recipe {
    std::string command;  ///< the command text, UTF-8, exactly as the builder composed it
    std::filesystem::path workingDirectory;  ///< empty: the child inherits ours
    std::uint32_t shell = shell::kInterpreter;
    std::vector<std::filesystem::path> searchDirectories;  ///< before PATH, for this child only

    std::vector<RecipeInput> inputs;
    std::vector<Assignment> outputs;
    std::filesystem::path dependencyFile;  ///< written by the command: files it has read; or empty
    std::uint32_t stage = 0;  ///< recipes of a stage run together, after those of the lower stages
};

}  // namespace Vesk
