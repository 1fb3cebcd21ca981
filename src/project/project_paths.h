// How the paths that project and registry files hold are read.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace Vesk {

/// A path as a file in `directory` writes it: relative ones are relative to that directory.
std::filesystem::path pathWrittenIn(const std::filesystem::path& directory,
                                    const std::string& text);

/// A project may be named by its directory or by its file; gives the file. Both need not exist.
std::filesystem::path projectFileAt(const std::filesystem::path& path);

/// The weakly canonical path. Throws std::filesystem::filesystem_error for "weakly_canonical".
std::filesystem::path canonicalPath(const std::filesystem::path& path);

/// Equal for two spellings of one file: links, "..", and on Windows case do not matter. Throws as
/// canonicalPath.
std::string fileIdentity(const std::filesystem::path& path);

/// "/ws/lib/.vesk_project.txt:12", for notes in messages.
std::string placeOf(const std::filesystem::path& file, std::uint32_t line);

}  // namespace Vesk
