// Names under which records and requests keep what is not a variable of a target. No variable of
// the language can have such a name.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

/// Outputs of a record's parts.
namespace recordField {
inline constexpr std::string_view kFiles = "files: states";  ///< of the first part
inline constexpr std::string_view kReads = "files: read";    ///< numbers in that table
inline constexpr std::string_view kWrites = "files: written";
inline constexpr std::string_view kStamp = "build: stamp";  ///< of the first part
inline constexpr std::string_view kSeal = "build: seal";  ///< of the first part: see record_seal.h
inline constexpr std::string_view kMilliseconds = "build: milliseconds";  ///< that a recipe took
}  // namespace recordField

/// Inputs of the first two parts.
namespace requestField {
inline constexpr std::string_view kDependency =
    "dependency: ";  ///< followed by its name; the text is its stamp
inline constexpr std::string_view kReads = "files: read";  ///< paths, sorted, a line each
inline constexpr std::string_view kWrites = "files: written";
}  // namespace requestField

/// Replaces a text that the file must not show.
inline constexpr std::string_view kHashInstead = "hash: ";
std::string hashInstead(std::string_view text);

/// The inputs of the second part in the record of an unfinished build. No request has them.
const std::string& unfinishedInputs();

}  // namespace Vesk
