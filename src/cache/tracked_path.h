// Paths as the cache spells them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// Absolute, UTF-8, with forward slashes.
std::string trackedPath(const std::filesystem::path& path);

/// The same for a path in UTF-8, which starts from `base` when it is relative.
std::string trackedPath(const std::string& path, const std::filesystem::path& base);

/// The path that stands for the names in a directory, "include/*". No file that is tracked has such
/// a name: a star makes a pattern.
std::string namesPath(std::string_view directory);
bool isNamesPath(std::string_view path) noexcept;

/// The directory that holds a file, and the one of a namesPath. Empty where there is none.
std::string_view directoryOf(std::string_view path) noexcept;

/// Whether a tracked path lies in a directory that is written in the same way.
bool isBelow(std::string_view path, std::string_view directory) noexcept;

/// Whether a tracked path lies in one of the directories, which are written in the same way.
bool isBelowAny(std::string_view path, const std::vector<std::string>& directories) noexcept;

/// A project's directory, from which records name the files below it, so that a project that has
/// moved finds its records good.
class TrackingRoot {
  public:
    explicit TrackingRoot(const std::filesystem::path& directory);

    /// A tracked path as it stands in a record.
    std::string_view stored(std::string_view path) const;

    /// And back.
    std::string absolute(std::string_view stored) const;

    const std::filesystem::path& directory() const noexcept { return directory_; }

  private:
    std::filesystem::path directory_;
    std::string prefix_;  ///< with a slash at its end
};

}  // namespace Vesk
