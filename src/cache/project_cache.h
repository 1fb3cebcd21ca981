// The memory of earlier builds of one project.
//
// Two levels of locks: one guards the map, one in each entry guards that entry. They are never held
// together, so looking up one record never waits for work on another.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cache/cache_record.h"
#include "cache/claim_journal.h"
#include "cache/file_states.h"
#include "cache/made_files.h"
#include "cache/record_seal.h"
#include "cache/tracked_path.h"

namespace Vesk {

enum class CacheAnswer {
    Hit,      ///< the record stands: nothing needs to run
    Claimed,  ///< the caller builds, and then upserts or releases
    Miss,     ///< the caller builds; its result is not recorded
    Refused,  ///< the cache has been closed
};

struct ObtainResult {
    CacheAnswer answer = CacheAnswer::Miss;

    /// Hit: the record. Claimed and Miss: that of the last build, if any, for finding out what has
    /// changed since.
    std::optional<RecordText> record;

    std::uint64_t token = 0;  ///< Claimed: never 0
};

/// What `obtain` does when nobody builds the record and it does not match.
enum class Lookup {
    only,  ///< answers and claims nothing
    claim,
    claimUnseen,  ///< as `claim`, without comparing: the caller knows that it does not match
};

/// All operations may be called from any thread.
class ProjectCache {
  public:
    /// Empty; its file is kCacheFileName in this directory. Records are compared with the files as
    /// `states` has them.
    ProjectCache(const std::filesystem::path& directory, FileStates& states);
    ProjectCache(const ProjectCache&) = delete;
    ProjectCache& operator=(const ProjectCache&) = delete;

    const TrackingRoot& root() const noexcept { return root_; }
    FileStates& states() noexcept { return states_; }

    /// What builds have made. To be used on one thread at a time; `save` saves it too.
    MadeFiles& made() noexcept { return made_; }

    /// Reads the file. Never fails: after a fault the cache is empty and a warning has told why.
    /// To be called before anything else.
    void load();

    /// Looks the key up and compares. While another build holds the claim this waits until it is
    /// released, at most `waitMilliseconds`; 0 waits as long as it takes.
    ObtainResult obtain(const std::string& key, const CacheRequest& request, Lookup lookup,
                        std::uint64_t waitMilliseconds);

    /// The record of the last build, if any, which is compared with nothing. The key takes its
    /// place among the records, as if it had been asked for.
    std::optional<RecordText> last(const std::string& key);

    /// Of the record of a finished build, to be recognised later. Nothing without one.
    std::optional<ContentHash> recordHash(const std::string& key);

    enum class Standing {
        no,
        yes,
        refreshed,  ///< files were touched; the record, which remembers their new times, is another
    };

    /// Whether the record is that one, and its files are what it says, for a caller who knows that
    /// a request would be the same. The answer is no where a file `isToBeMade`.
    Standing standing(const std::string& key, const ContentHash& record,
                      const std::function<bool(const std::string&)>& isToBeMade);

    /// Stores the record of a finished build and ends the claim. False, with a message, when the
    /// token is not that of the current claim. A key that nobody asked for yet is inserted. Saves
    /// when that was long ago.
    bool upsert(const std::string& key, RecordText record, std::uint64_t token);

    /// Keeps what a build has done so far under its claim, which goes on. Saves as `upsert` does.
    void checkpoint(const std::string& key, RecordText record, std::uint64_t token);

    /// Ends a claim without a record, after a build that failed. The key's earlier record has been
    /// no hit since the claim. Does nothing for a token that is not current.
    void release(const std::string& key, std::uint64_t token) noexcept;

    /// Every key that has a record, and the record. While no build goes on.
    std::vector<std::pair<std::string, RecordText>> records();

    /// Drops the record of a key, unless it is claimed.
    void forget(const std::string& key);

    /// Ends all waiting; every operation on a record is refused from now on.
    void close() noexcept;

    /// Writes the file if there is news. False, with a message, when that fails.
    bool save();

    /// How long a finished build may stay unsaved while the next ones run.
    static constexpr std::chrono::seconds kSaveInterval{30};

  private:
    struct Entry {
        std::string_view key;
        std::mutex mutex;
        std::condition_variable released;  ///< told when the claim ends
        std::optional<RecordText> record;  ///< of the last build
        DayNumber day = 0;                 ///< on which it was last asked for; 0: not one of ours
        bool valid = false;                ///< it finished, and nobody has begun another
        bool stored = false;               ///< the file has a record that could be taken for a hit
        bool claimed = false;
        bool closed = false;
        std::uint64_t token = 0;  ///< of the claim; 0 without one

        /// The record is no hit any more, and no recipe is fresh for its sake that does not tell
        /// what it writes.
        void invalidate();
        void endClaim() noexcept;
    };

    Entry* find(std::string_view key);
    Entry* findOrCreate(const std::string& key);
    Entry& create(std::string_view key);
    bool insert(const std::string& key, const RecordText& record);
    void addLoaded(std::string_view key, RecordText record, DayNumber day);
    void markAsked(Entry& entry) noexcept;
    Standing filesStand(Entry& entry, const std::function<bool(const std::string&)>& isToBeMade);
    ObtainResult check(Entry& entry, const CacheRequest& request);
    void beginClaim(Entry& entry, ObtainResult& result);
    ObtainResult obtainAfterWaiting(Entry& entry, const CacheRequest& request,
                                    std::unique_lock<std::mutex>& lock,
                                    std::uint64_t waitMilliseconds);
    void saveWhenDue();
    void confirmRecent(Entry& entry);
    bool isOutdated(const Entry& entry) const noexcept;
    void forgetEverything();

    TrackingRoot root_;
    FileStates& states_;
    ClaimJournal journal_;
    MadeFiles made_;
    std::filesystem::path file_;
    DayNumber today_ = today();

    std::mutex mutex_;
    bool closed_ = false;
    std::deque<Entry> storage_;                      ///< entries stay for good
    std::deque<std::string> ownKeys_;                ///< of entries that were not in the file
    std::shared_ptr<const std::string> textOfKeys_;  ///< keeps the keys that were
    std::unordered_map<std::string_view, Entry*> entries_;

    std::mutex saving_;
    std::atomic<bool> changed_ = false;  ///< the file is out of date
    std::chrono::steady_clock::time_point savedAt_ = std::chrono::steady_clock::now();
};

}  // namespace Vesk
