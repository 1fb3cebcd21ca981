// Which records of the cache file are outdated by builds that the file does not contain yet.
#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// A file next to the cache file. A key is written to it before the first command runs that may
/// change what the key's record describes. When the cache file has been saved, the journal is
/// removed. So a killed process leaves no record that could wrongly be taken for a hit.
class ClaimJournal {
  public:
    explicit ClaimJournal(const std::filesystem::path& cacheFile);

    /// The keys left by a killed process. Nothing, after a warning, if they cannot be known; then
    /// each record may be one of them.
    std::optional<std::vector<std::string>> read();

    /// False if the key cannot be written.
    bool note(std::string_view key);

    void clear() noexcept;

    const std::filesystem::path& file() const noexcept { return file_; }

  private:
    bool append(const std::string& text) const;

    /// Moves the file into place together with its first claim. A killed process thus leaves no
    /// empty file, which would look like one that was cut short.
    bool create(const std::string& text) const;

    std::filesystem::path file_;
    std::mutex mutex_;
    bool exists_ = false;
};

}  // namespace Vesk
