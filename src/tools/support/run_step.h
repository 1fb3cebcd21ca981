// Steps of a recipe that does its work in vesk's own process.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "run/recipe.h"

namespace Vesk {

/// Throws VeskException if the command fails.
void runOrThrow(const Command& command);

/// Makes an empty directory, removing whatever was there. Throws VeskException.
void renewDirectory(const std::filesystem::path& directory);

/// Writes a file with arguments for a command. Throws VeskException.
void writeArguments(const std::string& file, std::string_view text);

}  // namespace Vesk
