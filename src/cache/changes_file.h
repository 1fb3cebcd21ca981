// Records that are newer than those in the cache file.
//
// An edit changes few records of a project, so a large cache file is not written again for them:
// they are appended to a file beside it. That one begins with the hash of the cache file to which
// it belongs; beside any other it is ignored. A process that is killed while it appends leaves a
// cut record, with which the file ends: its target, and those that would follow, are in the journal
// of claims, so that no older record of theirs is taken for a hit.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cache/cache_file.h"

namespace Vesk {

class ChangesFile {
  public:
    explicit ChangesFile(const std::filesystem::path& cacheFile);

    /// Reads the file. Call this before the cache file is read, which another process may replace,
    /// and with it remove this file.
    void read();

    /// Receives a record and the position in the file at which its text ends.
    using Sink =
        std::function<void(std::string_view key, RecordText record, std::uint64_t position)>;

    /// Hands over what belongs to the cache file, in the order in which it was appended.
    void take(const CacheFileIdentity& cacheFile, const Sink& sink);

    /// A cache file is in place that has all records. Removes the file.
    void restart(const CacheFileIdentity& cacheFile);

    /// So many bytes are used; what is appended next ends behind them.
    std::uint64_t size() const noexcept { return size_; }

    /// Whether so many bytes are better appended than written with all others.
    bool takes(std::size_t bytes) const noexcept;

    /// Appends records in the form of `appendSealedRecord`. After a failure nothing can be appended
    /// until `restart`.
    bool append(std::string_view records);

    const std::filesystem::path& file() const noexcept { return file_; }

  private:
    std::filesystem::path file_;
    std::shared_ptr<const std::string> content_;  ///< until it is taken
    std::optional<CacheFileIdentity> cacheFile_;  ///< nothing: none to which one could append
    std::atomic<std::uint64_t> size_ = 0;         ///< of what belongs to it
    bool exists_ = false;                         ///< a file is there, whatever it belongs to
};

}  // namespace Vesk
