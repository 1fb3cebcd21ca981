// Which records of the cache file have been overtaken by builds that it does not know of yet.
#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// A file beside the cache file. A key is noted before the first command runs that may change what
/// its record tells of; the file is removed when the cache file has been saved. So a process that
/// is killed in between leaves no record that could be taken for a hit by mistake.
class ClaimJournal {
  public:
    explicit ClaimJournal(const std::filesystem::path& cacheFile);

    /// The keys that a killed process left. Nothing, after a warning, when they cannot be known:
    /// then each record may be one of them.
    std::optional<std::vector<std::string>> read();

    /// False when it cannot be written down.
    bool note(std::string_view key);

    void clear() noexcept;

  private:
    bool append(const std::string& text) const;

    /// Moves the file into place with its first claim: a process that is killed leaves no empty
    /// file, which would be taken for one cut short.
    bool create(const std::string& text) const;

    std::filesystem::path file_;
    std::mutex mutex_;
    bool exists_ = false;
};

}  // namespace Vesk
