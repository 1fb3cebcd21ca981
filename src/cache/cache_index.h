// What is known of the records in a cache file, so that the next run need not read each of them.
//
// The index stands beside the cache file and holds a hash of all of it. As long as that is right,
// every record is as it was written. Any other index is as good as none: then the records are read
// and their seals are checked.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string_view>

#include "base/bytes.h"
#include "base/text_hasher.h"
#include "cache/cache_record.h"

namespace Vesk {

/// Puts an index together while a cache file is written.
class CacheIndexWriter {
  public:
    /// All text of the cache file, piece by piece.
    void take(std::string_view text) noexcept { hasher_.take(text); }

    ContentHash hashOfFile() const noexcept { return hasher_.hash(); }

    /// The next record of the file. `record` is its text, of which `stored` is known, with its hash
    /// and its table.
    void add(std::string_view key, std::string_view record, const StoredRecord& stored);

    /// A failure does not matter: the next run reads the records themselves.
    void write(const std::filesystem::path& cacheFile) const;

  private:
    TextHasher hasher_;
    Encoder records_;
};

using IndexedSink =
    std::function<void(std::string_view key, std::string_view record, const StoredRecord& stored)>;

enum class IndexUse { none, all, faulty };

/// Hands over the records of a cache file with this content and its hash, in its order. `none`:
/// there is no index of just this content. `faulty`: the records are not all that there is.
IndexUse takeIndexed(const std::filesystem::path& cacheFile, std::string_view content,
                     const ContentHash& hash, const IndexedSink& take);

}  // namespace Vesk
