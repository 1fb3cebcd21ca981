// Paths in the form that the cache uses.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// Absolute, UTF-8, with forward slashes.
std::string trackedPath(const std::filesystem::path& path);

/// The same for a path in UTF-8. A relative one starts from `base`.
std::string trackedPath(const std::string& path, const std::filesystem::path& base);

/// The path that stands for the names in a directory, "include/*". No tracked file has such a name,
/// because a star makes a pattern.
std::string namesPath(std::string_view directory);
bool isNamesPath(std::string_view path) noexcept;

/// The directory of a file, or the one that a namesPath stands for. Empty if there is none.
std::string_view directoryOf(std::string_view path) noexcept;

/// Whether a tracked path lies below a directory that is spelled the same way.
bool isBelow(std::string_view path, std::string_view directory) noexcept;

/// Whether a tracked path lies below one of the directories, which are spelled the same way.
bool isBelowAny(std::string_view path, const std::vector<std::string>& directories) noexcept;

/// A project's directory. Records name the files below it relative to it, so they stay valid when
/// the project moves.
class TrackingRoot {
  public:
    explicit TrackingRoot(const std::filesystem::path& directory);

    /// The form that a tracked path has in a record.
    std::string_view stored(std::string_view path) const;

    /// The reverse.
    std::string absolute(std::string_view stored) const;

    const std::filesystem::path& directory() const noexcept { return directory_; }

  private:
    std::filesystem::path directory_;
    std::string prefix_;  ///< with a slash at its end
};

}  // namespace Vesk
