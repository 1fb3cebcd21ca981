// Which files there are to look at, and of which kind each is.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/syntax_tree.h"

namespace Vesk::editor {

class Workspace;

/// By the file's name; another name can stand for any kind, and the text tells.
FileKind kindOf(const std::filesystem::path& file, std::string_view text);

/// The files that the words name, or else the file of the project at the current directory with its
/// unit files, relative to the current one, or else `unitFile`.
std::vector<std::filesystem::path> filesNamed(Workspace& workspace,
                                              const std::vector<std::string>& words,
                                              const std::filesystem::path& unitFile);

}  // namespace Vesk::editor
