#include "tools/support/powershell_staging.h"

#include <fmt/format.h>
#include <utility>

#include "platform/files.h"
#include "tools/support/parent_directory.h"

namespace Vesk {

namespace {

std::string quoted(const std::filesystem::path& path) {
    return quoteForPowerShell(platform::pathToUtf8(path));
}

Recipe powershellRecipe(std::string command, std::uint32_t stage) {
    Recipe recipe;
    recipe.command = std::move(command);
    recipe.shell = shell::kPowershell;
    recipe.stage = stage;
    return recipe;
}

std::string recreateCommand(const std::filesystem::path& directory) {
    return fmt::format(
        "if (Test-Path -LiteralPath {0}) {{ Remove-Item -LiteralPath {0} -Recurse -Force }}; "
        "New-Item -ItemType Directory -Force -Path {0} | Out-Null",
        quoted(directory));
}

std::string copyCommand(const std::filesystem::path& source, const std::filesystem::path& target) {
    return fmt::format(
        "New-Item -ItemType Directory -Force -Path {} | Out-Null; "
        "Copy-Item -LiteralPath {} -Destination {} -Force",
        quoted(parentDirectory(target)), quoted(source), quoted(target));
}

}  // namespace

std::string quoteForPowerShell(std::string_view text) {
    std::string result = "'";
    for (const char c : text) {
        result.append(c == '\'' ? 2 : 1, c);
    }
    result += '\'';
    return result;
}

std::vector<Recipe> stagingRecipes(const std::filesystem::path& destination,
                                   const std::vector<StagedFile>& files, std::uint32_t firstStage) {
    std::vector<Recipe> recipes;
    recipes.reserve(files.size() + 1);
    recipes.push_back(powershellRecipe(recreateCommand(destination), firstStage));
    for (const StagedFile& file : files) {
        recipes.push_back(powershellRecipe(
            copyCommand(file.source, destination / file.relativePath), firstStage + 1));
    }
    return recipes;
}

}  // namespace Vesk
