// Files as editors and reports name them: file:///p/a%20b.txt, file:///C:/p/b.txt.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Vesk::editor {

/// Of an absolute path. A drive's colon is not escaped, a share is the host.
std::string uriOf(const std::filesystem::path& file);

/// Nothing for a URI that names no file. Escapes of any character are read, and both ways in which
/// drives are written: "C:" and "c%3A".
std::optional<std::filesystem::path> pathOfUri(std::string_view uri);

/// The bytes of a text, but letters, digits and "-._~/", as "%20".
std::string percentEncoded(std::string_view text);

}  // namespace Vesk::editor
