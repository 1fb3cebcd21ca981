// From text to model: the four ways in which text of the language is loaded.
//
// Each throws on any failure; none returns part of a model. Files are UTF-8, with or without a byte
// order mark, of at most kMaxFileBytes. Errors found after parsing carry a note with file and line.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "grammar/model.h"
#include "types/context/assignment.h"
#include "types/model/target.h"

namespace Vesk {

class UnitOutlines;

/// Larger files are refused; nobody writes them by hand.
inline constexpr std::size_t kMaxFileBytes = std::size_t{32} * 1024 * 1024;

/// At most this many braces and square brackets may be open at once. The parser recurses, and the
/// stack of a Windows program overflows at about twice as many.
inline constexpr std::size_t kMaxNesting = 1000;

/// Loads a unit file. Syntax errors are printed to standard error as they are found. Throws
/// VeskException for a file that cannot be read or has syntax errors, for a value that cannot be
/// made and for two targets of the same name; std::filesystem::filesystem_error if the file's path
/// has no canonical form. Targets that `outlines` knows, if it is not null, are parsed only when
/// their text is asked for; a new outline is stored there.
Unit parseUnitFile(const std::filesystem::path& path, UnitOutlines* outlines = nullptr);

/// Loads a project file. Throws NotFoundException if it cannot be opened, VeskException with all
/// syntax errors, one per line, and otherwise as parseUnitFile does.
ProjectFile parseProjectFile(const std::filesystem::path& path);

/// Loads a registry file. Throws as parseProjectFile does.
RegistryFile parseRegistryFile(const std::filesystem::path& path);

/// The assignment at the start of `text`; anything after it is ignored. Relative paths in it are
/// relative to `base`. Bytes that are not UTF-8 are kept inside strings. Throws VeskException.
Assignment parseAssignment(const std::string& text, const std::filesystem::path& base);

}  // namespace Vesk
