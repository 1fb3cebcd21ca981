#include "build/cache/memory_cache.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "base/console.h"

namespace Vesk {

namespace {

std::uint64_t newToken() noexcept {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

/// Longer limits are cut to this: some systems' waiting overflows on points of time far away.
constexpr std::chrono::hours kLongestWait(24 * 365 * 50);

std::chrono::steady_clock::time_point deadlineAfter(std::uint64_t milliseconds) {
    constexpr std::chrono::milliseconds longest = kLongestWait;
    const auto limit = std::min(milliseconds, static_cast<std::uint64_t>(longest.count()));
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(limit);
}

}  // namespace

MemoryCache::Entry* MemoryCache::find(const std::string& key) {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(key);
    return found == entries_.end() ? nullptr : found->second.get();
}

MemoryCache::Entry* MemoryCache::findOrCreate(const std::string& key) {
    const std::lock_guard lock(mutex_);
    if (closed_) {
        return nullptr;
    }
    std::unique_ptr<Entry>& entry = entries_[key];
    if (!entry) {
        entry = std::make_unique<Entry>();
    }
    return entry.get();
}

bool MemoryCache::matches(const CacheRecord& record, const CacheRequest& request) const {
    return sameRequest(record, request);
}

ObtainResult MemoryCache::check(const Entry& entry, const CacheRequest& request) const {
    if (entry.closed) {
        return {CacheAnswer::Refused, nullptr, 0};
    }
    const bool hit = entry.valid && matches(*entry.record, request);
    return {hit ? CacheAnswer::Hit : CacheAnswer::Miss, entry.record, 0};
}

ObtainResult MemoryCache::obtain(const std::string& key, const CacheRequest& request, Claim claim,
                                 std::uint64_t waitMilliseconds) {
    Entry* entry = findOrCreate(key);
    if (entry == nullptr) {
        return {CacheAnswer::Refused, nullptr, 0};
    }
    std::unique_lock lock(entry->mutex);
    ObtainResult result = check(*entry, request);
    if (result.answer != CacheAnswer::Miss) {
        return result;
    }
    if (entry->claimed) {
        return obtainAfterWaiting(key, *entry, request, lock, waitMilliseconds);
    }
    if (claim == Claim::yes) {
        entry->valid = false;  // what the build is about to write replaces what the record tells of
        entry->claimed = true;
        entry->token = newToken();
        result.answer = CacheAnswer::Claimed;
        result.token = entry->token;
    }
    return result;
}

ObtainResult MemoryCache::obtainAfterWaiting(const std::string& key, Entry& entry,
                                             const CacheRequest& request,
                                             std::unique_lock<std::mutex>& lock,
                                             std::uint64_t waitMilliseconds) const {
    const auto isReleased = [&entry] { return !entry.claimed || entry.closed; };
    if (waitMilliseconds == 0) {
        entry.released.wait(lock, isReleased);
    } else {
        entry.released.wait_until(lock, deadlineAfter(waitMilliseconds), isReleased);
    }
    ObtainResult result = check(entry, request);
    if (result.answer == CacheAnswer::Miss && !entry.valid) {
        console::message(console::level::kClaim, console::colour::kTrace,
                         "Cache record for '{}' was claimed but resulted in invalid recipes upon "
                         "completion.",
                         key);
    }
    return result;
}

bool MemoryCache::insert(const std::string& key, const std::shared_ptr<const CacheRecord>& record) {
    const std::lock_guard lock(mutex_);
    if (closed_ || entries_.contains(key)) {
        return false;
    }
    auto entry = std::make_unique<Entry>();
    entry->record = record;
    entry->valid = true;
    entries_.emplace(key, std::move(entry));
    return true;
}

bool MemoryCache::upsert(const std::string& key, CacheRecord record, std::uint64_t token) {
    const auto stored = std::make_shared<const CacheRecord>(std::move(record));
    if (insert(key, stored)) {
        console::trace("Inserted new cache record for '{}'.", key);
        return true;
    }
    Entry* entry = find(key);
    if (entry == nullptr) {
        return false;
    }
    const std::lock_guard lock(entry->mutex);
    if (entry->closed) {
        return false;
    }
    if (token == 0 || token != entry->token) {
        console::error("Cache upsert rejected for '{}': claim token mismatch.", key);
        return false;
    }
    entry->record = stored;
    entry->valid = true;
    entry->endClaim();
    return true;
}

void MemoryCache::release(const std::string& key, std::uint64_t token) noexcept {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return;
    }
    const std::lock_guard lock(entry->mutex);
    if (token != 0 && token == entry->token) {
        entry->endClaim();
    }
}

void MemoryCache::close() noexcept {
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
    }
    // Nothing is added to a closed cache, so the map can be walked without its lock.
    for (const auto& [key, entry] : entries_) {
        const std::lock_guard lock(entry->mutex);
        entry->closed = true;
        entry->released.notify_all();
    }
}

void MemoryCache::Entry::endClaim() noexcept {
    claimed = false;
    token = 0;
    released.notify_all();
}

}  // namespace Vesk
