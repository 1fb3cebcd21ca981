// Records and claims in memory.
//
// Two levels of locks: one guards the map, one in each entry guards that entry. They are never held
// together, so looking up one record never waits for work on another.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "build/cache/build_cache.h"

namespace Vesk {

/// Starts empty; what is upserted lives as long as the cache.
class MemoryCache : public BuildCache {
  public:
    ObtainResult obtain(const std::string& key, const CacheRequest& request, Claim claim,
                        std::uint64_t waitMilliseconds) override;
    bool upsert(const std::string& key, CacheRecord record, std::uint64_t token) override;
    void release(const std::string& key, std::uint64_t token) noexcept override;
    void close() noexcept override;

    /// There is nothing to write: true.
    bool save() override { return true; }

  protected:
    /// Whether the record of a completed build answers the request. Called with the record's entry
    /// locked.
    virtual bool matches(const CacheRecord& record, const CacheRequest& request) const;

  private:
    struct Entry {
        std::mutex mutex;
        std::condition_variable released;           ///< told when the claim ends
        std::shared_ptr<const CacheRecord> record;  ///< of the last completed build
        bool valid = false;                         ///< what the record tells of is still in place
        bool claimed = false;
        bool closed = false;
        std::uint64_t token = 0;  ///< of the claim; 0 without one

        void endClaim() noexcept;
    };

    Entry* find(const std::string& key);
    Entry* findOrCreate(const std::string& key);
    bool insert(const std::string& key, const std::shared_ptr<const CacheRecord>& record);
    ObtainResult check(const Entry& entry, const CacheRequest& request) const;
    ObtainResult obtainAfterWaiting(const std::string& key, Entry& entry,
                                    const CacheRequest& request, std::unique_lock<std::mutex>& lock,
                                    std::uint64_t waitMilliseconds) const;

    std::mutex mutex_;
    bool closed_ = false;
    std::unordered_map<std::string, std::unique_ptr<Entry>> entries_;  ///< entries stay for good
};

}  // namespace Vesk
