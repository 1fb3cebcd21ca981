// Models of texts that are at hand, as opposed to files (loaders.h). The text has no errors of
// syntax: it is parsed silently, and what is wrong with it is thrown without saying where.
#pragma once

#include <filesystem>
#include <string_view>

#include "grammar/model.h"
#include "types/model/target.h"

namespace Vesk {

/// `file` is where the text is from; it need not exist. Throw VeskException, as the loaders do for
/// values that cannot be made.
Unit unitOfText(std::string_view text, const std::filesystem::path& file);
ProjectFile projectOfText(std::string_view text, const std::filesystem::path& file);

}  // namespace Vesk
