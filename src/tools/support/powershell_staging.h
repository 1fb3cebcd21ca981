// Copies files into their own directory with PowerShell, for tools that pack directories.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "run/recipe.h"

namespace Vesk {

struct StagedFile {
    std::filesystem::path source;
    std::filesystem::path relativePath;  ///< where it goes below the destination
};

/// The text in single quotes, in the form that PowerShell reads back unchanged.
std::string quoteForPowerShell(std::string_view text);

/// One recipe that recreates the destination, in the first stage, and one for each file that copies
/// it there, in the stage after it.
std::vector<Recipe> stagingRecipes(const std::filesystem::path& destination,
                                   const std::vector<StagedFile>& files,
                                   std::uint32_t firstStage = 0);

}  // namespace Vesk
