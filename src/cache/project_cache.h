// The memory of earlier builds of one project.
//
// There are two levels of locks: one guards the map, and one in each entry guards that entry. They
// are never held together, so looking up one record never waits for work on another.
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
#include "cache/changes_file.h"
#include "cache/claim_journal.h"
#include "cache/expected_files.h"
#include "cache/file_states.h"
#include "cache/made_files.h"
#include "cache/record_files.h"
#include "cache/record_seal.h"
#include "cache/tracked_path.h"

namespace Vesk {

enum class CacheAnswer {
    Hit,      ///< the record stands; nothing needs to run
    Claimed,  ///< the caller builds, then calls upsert or release
    Miss,     ///< the caller builds; its result is not recorded
    Refused,  ///< the cache has been closed
};

struct ObtainResult {
    CacheAnswer answer = CacheAnswer::Miss;

    /// Hit: the record. Claimed and Miss: the record of the last build, if any, to find out what
    /// has changed since.
    std::optional<RecordText> record;

    std::uint64_t token = 0;  ///< Claimed: never 0
};

/// What `obtain` does if nobody is building the record and it does not match.
enum class Lookup {
    only,  ///< only answers; claims nothing
    claim,
    claimUnseen,  ///< like `claim`, without comparing: the caller knows that it does not match
};

/// All operations may be called from any thread.
class ProjectCache {
  public:
    /// Starts empty. The file is kCacheFileName in this directory. Records are compared with the
    /// files in the states that `states` gives.
    ProjectCache(const std::filesystem::path& directory, FileStates& states);
    ProjectCache(const ProjectCache&) = delete;
    ProjectCache& operator=(const ProjectCache&) = delete;

    const TrackingRoot& root() const noexcept { return root_; }
    FileStates& states() noexcept { return states_; }

    /// The files that builds have made. To be used by one thread at a time; `save` saves it as
    /// well.
    MadeFiles& made() noexcept { return made_; }

    /// Reads the file. Never fails: after a fault the cache is empty and a warning has given the
    /// reason. Call this before anything else.
    void load();

    /// Looks the key up and compares. While another build holds the claim, waits until it is
    /// released, at most `waitMilliseconds`; 0 means without limit.
    ObtainResult obtain(const std::string& key, const CacheRequest& request, Lookup lookup,
                        std::uint64_t waitMilliseconds);

    /// The record of the last build, if any, without comparing it with anything. The key takes its
    /// place among the records as if it had been asked for.
    std::optional<RecordText> last(const std::string& key);

    /// A hash that identifies the record of a finished build. Nothing if there is no such record.
    std::optional<ContentHash> recordHash(const std::string& key);

    enum class Standing {
        no,
        yes,
        refreshed,  ///< files were touched, so the record was replaced by one with their new times
    };

    struct StandingQuestion {
        /// Whether somebody is going to make a file: then the record does not stand.
        std::function<bool(const std::string&)> isToBeMade;

        /// Whether a file may not be as the record says. Empty: any may not. The others have been
        /// looked at a moment ago.
        std::function<bool(const std::string&)> mayDiffer = {};
    };

    /// Whether the record is the one with this hash and its files are still as it says, for a
    /// caller who knows that a request would be the same.
    Standing standing(const std::string& key, const ContentHash& record,
                      const StandingQuestion& question);

    /// Adds the files of the record, which is the one with this hash. False if there is no such
    /// record of a finished build, or if its files are not as it says.
    bool expect(const std::string& key, const ContentHash& record, ExpectedFiles& expected);

    /// The files that `load` has read, to be asked about once they are saved.
    std::vector<std::filesystem::path> ownFiles() const {
        return {file_, changes_.file(), journal_.file()};
    }

    /// Stores the record of a finished build and ends the claim. False, with a message, if the
    /// token is not that of the current claim. A key that nobody has asked for yet is inserted.
    /// Saves the file if the last save was long ago.
    bool upsert(const std::string& key, RecordText record, std::uint64_t token);

    /// Keeps what a build has done so far; the claim continues. Saves as `upsert` does.
    void checkpoint(const std::string& key, RecordText record, std::uint64_t token);

    /// Ends a claim without a record, after a failed build. The key's earlier record has not been a
    /// hit since the claim began. Does nothing for an outdated token.
    void release(const std::string& key, std::uint64_t token) noexcept;

    /// All keys that have a record, with the record. Call only while nothing is being built.
    std::vector<std::pair<std::string, RecordText>> records();

    /// Drops the record of a key, unless it is claimed.
    void forget(const std::string& key);

    /// Ends all waiting. From now on every operation on a record is refused.
    void close() noexcept;

    /// Writes the file if anything is new, or what is new to the file of changes. False, with a
    /// message, if that fails.
    bool save();

    /// How long a finished build may stay unsaved while others run.
    static constexpr std::chrono::seconds kSaveInterval{30};

  private:
    struct Entry {
        std::string_view key;
        std::mutex mutex;
        std::condition_variable released;  ///< notified when the claim ends
        std::optional<RecordText> record;  ///< of the last build
        DayNumber day = 0;                 ///< when it was last asked for; 0: not one of vesk's
        bool valid = false;                ///< it is finished, and no newer build has begun
        bool stored = false;   ///< the file holds a record that could be taken for a hit
        bool unsaved = false;  ///< no file holds the record
        bool claimed = false;
        bool closed = false;
        std::uint64_t token = 0;  ///< of the claim; 0 if there is none

        /// The record is no longer a hit, and it no longer makes a recipe fresh that does not
        /// declare what it writes.
        void invalidate();
        void endClaim() noexcept;
    };

    Entry* find(std::string_view key);
    Entry* findOrCreate(const std::string& key);
    Entry& create(std::string_view key);
    bool insert(const std::string& key, const RecordText& record);
    void addLoaded(std::string_view key, RecordText record);
    void markAsked(Entry& entry) noexcept;
    static bool stands(const Entry& entry, const ContentHash& record);
    Standing filesStand(Entry& entry, const StandingQuestion& question);
    FileStates::Comparison compare(const RecordFile& file, const StandingQuestion& question);
    ObtainResult check(Entry& entry, const CacheRequest& request);
    void beginClaim(Entry& entry, ObtainResult& result);
    ObtainResult obtainAfterWaiting(Entry& entry, const CacheRequest& request,
                                    std::unique_lock<std::mutex>& lock,
                                    std::uint64_t waitMilliseconds);
    void saveWhenDue();

    /// By key, the positions in the file of changes at which the last records end.
    using Positions = std::unordered_map<std::string_view, std::uint64_t>;

    Positions addChanges(const CacheFileIdentity& cacheFile);
    void invalidateClaimed(const std::vector<Claim>& claims, const Positions& changed);
    void noteUnsaved(Entry& entry);
    void noteWholeIsDue() noexcept;
    std::optional<std::size_t> sizeOfChanges(const std::vector<Entry*>& entries);
    bool appendChanges(const std::vector<Entry*>& unsaved);
    bool writeWhole();
    void confirmRecent(Entry& entry);
    bool isOutdated(const Entry& entry) const noexcept;
    void forgetEverything();

    TrackingRoot root_;
    FileStates& states_;
    ClaimJournal journal_;
    ChangesFile changes_;
    MadeFiles made_;
    std::filesystem::path file_;
    DayNumber today_ = today();

    std::mutex mutex_;
    bool closed_ = false;
    std::deque<Entry> storage_;        ///< entries are never removed
    std::deque<std::string> ownKeys_;  ///< for entries that were not in the file
    std::vector<std::shared_ptr<const void>> textsOfKeys_;  ///< keep the other keys alive
    std::unordered_map<std::string_view, Entry*> entries_;

    std::mutex saving_;
    std::atomic<bool> changed_ = false;     ///< what is in the files is out of date
    std::atomic<bool> wholeIsDue_ = false;  ///< more than `unsaved_` is new
    std::mutex unsavedMutex_;
    std::vector<Entry*> unsaved_;
    std::chrono::steady_clock::time_point savedAt_ = std::chrono::steady_clock::now();
};

}  // namespace Vesk
