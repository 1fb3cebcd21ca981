// Which records of the cache file are outdated by builds that it does not contain.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

struct Claim {
    std::string key;
    std::uint64_t changes = 0;  ///< the size of the file of changes when the build began
};

/// A file next to the cache file. A key is written to it before the first command runs that may
/// change what the key's record describes. When the cache file has been written, the journal is
/// removed; a record that is appended to the file of changes makes up for the claims before it. So
/// a killed process leaves no record that could wrongly be taken for a hit.
class ClaimJournal {
  public:
    explicit ClaimJournal(const std::filesystem::path& cacheFile);

    /// All claims, in order. Nothing, after a warning, if they cannot be known; then each record
    /// may be one of them.
    std::optional<std::vector<Claim>> read();

    /// False if the claim cannot be written.
    bool note(const Claim& claim);

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
