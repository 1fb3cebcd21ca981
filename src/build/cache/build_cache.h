// The memory of earlier builds, as the driver sees it: one cache per project.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "build/cache/cache_record.h"

namespace Vesk {

enum class CacheAnswer {
    Hit,      ///< the record stands: nothing needs to run
    Claimed,  ///< the caller builds, and then upserts or releases
    Miss,     ///< the caller builds; its result is not recorded
    Refused,  ///< the cache has been closed
};

struct ObtainResult {
    CacheAnswer answer = CacheAnswer::Miss;

    /// Hit: the record. Claimed and Miss: the last completed build of the key, if any, for finding
    /// out what has changed since. Never changes once given out.
    std::shared_ptr<const CacheRecord> record;

    std::uint64_t token = 0;  ///< Claimed: never 0
};

/// What `obtain` does when nobody builds the record and it does not match.
enum class Claim { no, yes };

/// All operations may be called from any thread.
class BuildCache {
  public:
    virtual ~BuildCache() = default;

    /// Looks the key up and compares. While another build holds the claim this waits until it is
    /// released, at most `waitMilliseconds`; 0 waits as long as it takes.
    virtual ObtainResult obtain(const std::string& key, const CacheRequest& request, Claim claim,
                                std::uint64_t waitMilliseconds) = 0;

    /// Stores the record of a finished build and ends the claim. False, with a message, when the
    /// token is not that of the current claim. A key that nobody asked for yet is inserted.
    virtual bool upsert(const std::string& key, CacheRecord record, std::uint64_t token) = 0;

    /// Ends a claim without a record, after a build that failed. The key's earlier record has been
    /// no hit since the claim. Does nothing for a token that is not current.
    virtual void release(const std::string& key, std::uint64_t token) noexcept = 0;

    /// Ends all waiting; every operation on a record is refused from now on.
    virtual void close() noexcept = 0;

    /// Writes what is worth keeping. False, with a message, when that fails.
    virtual bool save() = 0;
};

}  // namespace Vesk
