#include "cache/project_cache.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/console.h"
#include "cache/cache_file.h"
#include "cache/freshness.h"
#include "cache/record_seal.h"
#include "platform/recording.h"

namespace Vesk {

namespace {

std::uint64_t newToken() noexcept {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

/// Longer limits are cut to this: on some systems, waiting for a point of time far away overflows.
constexpr std::chrono::hours kLongestWait(24 * 365 * 50);

std::chrono::steady_clock::time_point deadlineAfter(std::uint64_t milliseconds) {
    constexpr std::chrono::milliseconds longest = kLongestWait;
    const auto limit = std::min(milliseconds, static_cast<std::uint64_t>(longest.count()));
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(limit);
}

}  // namespace

ProjectCache::ProjectCache(const std::filesystem::path& directory, FileStates& states)
    : root_(directory),
      states_(states),
      journal_(directory / kCacheFileName),
      changes_(directory / kCacheFileName),
      made_(directory),
      file_(directory / kCacheFileName) {}

ProjectCache::Entry& ProjectCache::create(std::string_view key) {
    Entry& entry = storage_.emplace_back();
    entry.key = key;
    entries_.emplace(key, &entry);
    return entry;
}

ProjectCache::Entry* ProjectCache::find(std::string_view key) {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(key);
    return found == entries_.end() ? nullptr : found->second;
}

ProjectCache::Entry* ProjectCache::findOrCreate(const std::string& key) {
    const std::lock_guard lock(mutex_);
    if (closed_) {
        return nullptr;
    }
    const auto found = entries_.find(key);
    return found == entries_.end() ? &create(ownKeys_.emplace_back(key)) : found->second;
}

void ProjectCache::addLoaded(std::string_view key, RecordText record) {
    const auto found = entries_.find(key);
    Entry& entry = found == entries_.end() ? create(key) : *found->second;
    if (textsOfKeys_.empty() || textsOfKeys_.back() != record.storage()) {
        textsOfKeys_.push_back(record.storage());
    }
    entry.day = record.stored().day;
    entry.record = std::move(record);
    entry.valid = entry.day != 0;  // a record that vesk did not seal answers no request
    entry.stored = entry.valid;
}

void ProjectCache::forgetEverything() {
    entries_.clear();
    storage_.clear();
}

ProjectCache::Positions ProjectCache::addChanges(const CacheFileIdentity& cacheFile) {
    Positions changed;
    changes_.take(cacheFile, [&](std::string_view key, RecordText record, std::uint64_t position) {
        changed[key] = position;
        addLoaded(key, std::move(record));
    });
    return changed;
}

/// A record that was appended after its claim is that of the build that made the claim.
void ProjectCache::invalidateClaimed(const std::vector<Claim>& claims, const Positions& changed) {
    for (const Claim& claim : claims) {
        const auto last = changed.find(claim.key);
        if (last != changed.end() && last->second > claim.changes) {
            continue;
        }
        noteWholeIsDue();
        if (Entry* entry = find(claim.key)) {
            entry->invalidate();
        }
    }
}

void ProjectCache::load() {
    changes_.read();
    std::optional<CacheFileIdentity> identity;
    const bool whole = loadCacheFile(
        file_,
        [this](std::string_view key, RecordText record) { addLoaded(key, std::move(record)); },
        identity);
    const Positions changed = whole && identity ? addChanges(*identity) : Positions();
    const auto claimed = journal_.read();
    if (!whole || !claimed) {
        forgetEverything();
        noteWholeIsDue();              // a bad file is replaced even if nothing else is new
        platform::recordSideEffect();  // and the next run has nothing to warn of
        return;
    }
    invalidateClaimed(*claimed, changed);
}

void ProjectCache::noteUnsaved(Entry& entry) {
    if (!entry.unsaved) {
        entry.unsaved = true;
        const std::lock_guard lock(unsavedMutex_);
        unsaved_.push_back(&entry);
    }
    changed_ = true;
}

void ProjectCache::noteWholeIsDue() noexcept {
    wholeIsDue_ = true;
    changed_ = true;
}

/// A file in which nothing else is new is written for this only once in a while.
void ProjectCache::markAsked(Entry& entry) noexcept {
    if (entry.day != 0 && isDueAgain(entry.day, today_)) {
        noteWholeIsDue();
    }
    entry.day = today_;
}

ObtainResult ProjectCache::check(Entry& entry, const CacheRequest& request) {
    if (entry.closed) {
        return {CacheAnswer::Refused, std::nullopt, 0};
    }
    bool hit = false;
    markAsked(entry);
    if (entry.valid) {
        Freshness freshness(request, &*entry.record, states_, root_);
        hit = freshness.everything();
        if (hit && freshness.touched()) {
            entry.record = freshness.refreshed();
            noteUnsaved(entry);
        }
    }
    return {hit ? CacheAnswer::Hit : CacheAnswer::Miss, entry.record, 0};
}

void ProjectCache::beginClaim(Entry& entry, ObtainResult& result) {
    if (entry.stored && !journal_.note({std::string(entry.key), changes_.size()})) {
        // What cannot be recorded in the journal must not be in the file either.
        std::error_code ignored;
        platform::removeFile(file_, ignored);
        noteWholeIsDue();
    }
    entry.stored = false;
    entry.invalidate();
    entry.claimed = true;
    entry.token = newToken();
    noteUnsaved(entry);
    result.answer = CacheAnswer::Claimed;
    result.token = entry.token;
}

ObtainResult ProjectCache::obtain(const std::string& key, const CacheRequest& request,
                                  Lookup lookup, std::uint64_t waitMilliseconds) {
    Entry* entry = findOrCreate(key);
    if (entry == nullptr) {
        return {CacheAnswer::Refused, std::nullopt, 0};
    }
    std::unique_lock lock(entry->mutex);
    const bool unseen = lookup == Lookup::claimUnseen && !entry->closed;
    ObtainResult result =
        unseen ? ObtainResult{CacheAnswer::Miss, entry->record, 0} : check(*entry, request);
    if (result.answer != CacheAnswer::Miss) {
        return result;
    }
    if (entry->claimed) {
        return obtainAfterWaiting(*entry, request, lock, waitMilliseconds);
    }
    if (lookup != Lookup::only) {
        beginClaim(*entry, result);
    }
    return result;
}

ObtainResult ProjectCache::obtainAfterWaiting(Entry& entry, const CacheRequest& request,
                                              std::unique_lock<std::mutex>& lock,
                                              std::uint64_t waitMilliseconds) {
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
                         entry.key);
    }
    return result;
}

std::optional<RecordText> ProjectCache::last(const std::string& key) {
    Entry* entry = findOrCreate(key);
    if (entry == nullptr) {
        return std::nullopt;
    }
    const std::lock_guard lock(entry->mutex);
    markAsked(*entry);
    return entry->record;
}

std::optional<ContentHash> ProjectCache::recordHash(const std::string& key) {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return std::nullopt;
    }
    const std::lock_guard lock(entry->mutex);
    return entry->valid && entry->record ? std::optional(hashWithoutSeal(*entry->record))
                                         : std::nullopt;
}

/// A file that cannot differ is not looked at, here or later.
FileStates::Comparison ProjectCache::compare(const RecordFile& file,
                                             const StandingQuestion& question) {
    const std::string path = root_.absolute(file.path);
    const bool isKnown =
        file.state.kind == FileState::Kind::File && question.mayDiffer && !question.mayDiffer(path);
    if (isKnown) {
        states_.assume(path, file.state);
    }
    if (question.isToBeMade(path)) {
        return FileStates::Comparison::Changed;
    }
    return isKnown ? FileStates::Comparison::Same : states_.compare(path, file.state);
}

ProjectCache::Standing ProjectCache::filesStand(Entry& entry, const StandingQuestion& question) {
    const auto content = contentOf(*entry.record);
    bool touched = false;
    bool changed = content->isFaulty();
    for (const RecordFile& file : content->files()) {
        if (changed && !question.mayDiffer) {
            break;  // nothing more is to be learnt
        }
        const auto comparison = compare(file, question);
        touched = touched || comparison == FileStates::Comparison::SameContent;
        changed = changed || (comparison != FileStates::Comparison::Same &&
                              comparison != FileStates::Comparison::SameContent);
    }
    if (changed) {
        entry.record->keep(content);  // those who find out what is stale take it from there
        return Standing::no;
    }
    if (!touched) {
        return Standing::yes;
    }
    std::vector<RecordFile> files = content->files();
    for (RecordFile& file : files) {
        file.setState(states_.current(root_.absolute(file.path)));
    }
    entry.record = withFiles(*entry.record, files);
    noteUnsaved(entry);
    return Standing::refreshed;
}

/// Whether the record is the one with this hash and nobody makes another one.
bool ProjectCache::stands(const Entry& entry, const ContentHash& record) {
    return entry.valid && !entry.claimed && !entry.closed &&
           hashWithoutSeal(*entry.record) == record;
}

ProjectCache::Standing ProjectCache::standing(const std::string& key, const ContentHash& record,
                                              const StandingQuestion& question) {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return Standing::no;
    }
    const std::lock_guard lock(entry->mutex);
    if (!stands(*entry, record)) {
        return Standing::no;
    }
    markAsked(*entry);
    return filesStand(*entry, question);
}

bool ProjectCache::expect(const std::string& key, const ContentHash& record,
                          ExpectedFiles& expected) {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return false;
    }
    const std::lock_guard lock(entry->mutex);
    const auto files =
        stands(*entry, record) ? filesOf(*entry->record) : std::optional<std::vector<RecordFile>>();
    return files && std::ranges::all_of(*files, [&](const RecordFile& file) {
               return expected.add(root_.absolute(file.path), file.state);
           });
}

bool ProjectCache::insert(const std::string& key, const RecordText& record) {
    const std::lock_guard lock(mutex_);
    if (closed_ || entries_.contains(key)) {
        return false;
    }
    Entry& entry = create(ownKeys_.emplace_back(key));
    entry.record = record;
    entry.day = today_;
    entry.valid = true;
    noteUnsaved(entry);
    return true;
}

bool ProjectCache::upsert(const std::string& key, RecordText record, std::uint64_t token) {
    record = examined(record);
    if (insert(key, record)) {
        console::trace("Inserted new cache record for '{}'.", key);
        return true;
    }
    Entry* entry = find(key);
    if (entry == nullptr) {
        return false;
    }
    {
        const std::lock_guard lock(entry->mutex);
        if (entry->closed) {
            return false;
        }
        if (token == 0 || token != entry->token) {
            console::error("Cache upsert rejected for '{}': claim token mismatch.", key);
            return false;
        }
        entry->record = std::move(record);
        entry->valid = true;
        entry->endClaim();
        noteUnsaved(*entry);
    }
    saveWhenDue();
    return true;
}

void ProjectCache::checkpoint(const std::string& key, RecordText record, std::uint64_t token) {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return;
    }
    {
        const std::lock_guard lock(entry->mutex);
        if (token == 0 || token != entry->token) {
            return;
        }
        entry->record = std::move(record);
        noteUnsaved(*entry);
    }
    saveWhenDue();
}

void ProjectCache::saveWhenDue() {
    if (std::chrono::steady_clock::now() - savedAt_ >= kSaveInterval) {
        save();
    }
}

void ProjectCache::release(const std::string& key, std::uint64_t token) noexcept {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return;
    }
    const std::lock_guard lock(entry->mutex);
    if (token != 0 && token == entry->token) {
        entry->endClaim();
    }
}

std::vector<std::pair<std::string, RecordText>> ProjectCache::records() {
    std::vector<std::pair<std::string, RecordText>> records;
    for (Entry& entry : storage_) {  // nobody adds entries while this runs
        const std::lock_guard lock(entry.mutex);
        if (entry.record) {
            records.emplace_back(entry.key, *entry.record);
        }
    }
    return records;
}

void ProjectCache::forget(const std::string& key) {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return;
    }
    const std::lock_guard lock(entry->mutex);
    if (!entry->claimed) {
        entry->record.reset();
        entry->valid = false;
        noteWholeIsDue();
    }
}

void ProjectCache::close() noexcept {
    {
        const std::lock_guard lock(mutex_);
        closed_ = true;
    }
    // Nothing is added to a closed cache, so walking the entries needs no lock.
    for (Entry& entry : storage_) {
        const std::lock_guard lock(entry.mutex);
        entry.closed = true;
        entry.released.notify_all();
    }
}

/// Files that had changed just before they were examined: by now their times may be reliable.
void ProjectCache::confirmRecent(Entry& entry) {
    std::vector<RecordFile> files = recentFiles(*entry.record);
    std::erase_if(files, [this](const RecordFile& file) {
        return !FileStates::isSettled(root_.absolute(file.path), file.state);
    });
    if (!files.empty()) {
        entry.record = confirmed(*entry.record, files);
    }
}

bool ProjectCache::isOutdated(const Entry& entry) const noexcept {
    return entry.day != 0 && Vesk::isOutdated(entry.day, today_);
}

/// Nothing if they are better written with all others.
std::optional<std::size_t> ProjectCache::sizeOfChanges(const std::vector<Entry*>& entries) {
    std::size_t size = 0;
    for (Entry* entry : entries) {
        const std::lock_guard lock(entry->mutex);
        if (entry->record) {
            size += entry->key.size() + entry->record->text().size();
        }
    }
    return changes_.takes(size) ? std::optional(size) : std::nullopt;
}

bool ProjectCache::appendChanges(const std::vector<Entry*>& unsaved) {
    const auto size = sizeOfChanges(unsaved);
    if (!size) {
        return false;
    }
    std::string text;
    text.reserve(*size + *size / 8);
    for (Entry* entry : unsaved) {
        const std::lock_guard lock(entry->mutex);
        entry->unsaved = false;
        if (!entry->record) {
            continue;  // claimed for the first time, and not built
        }
        if (entry->valid && !entry->stored) {
            confirmRecent(*entry);
        }
        if (appendSealedRecord(text, entry->key, *entry->record, entry->day) == 0) {
            return false;
        }
        entry->stored = entry->valid;
    }
    return text.empty() || changes_.append(text);
}

bool ProjectCache::writeWhole() {
    std::vector<Entry*> entries;
    {
        const std::lock_guard lock(mutex_);
        for (Entry& entry : storage_) {
            entries.push_back(&entry);
        }
    }
    struct Saved {
        std::string_view key;
        RecordText record;
        DayNumber day;
    };
    std::vector<Saved> records;
    for (Entry* entry : entries) {
        const std::lock_guard lock(entry->mutex);
        entry->unsaved = false;
        if (entry->record && !isOutdated(*entry)) {
            if (entry->valid && !entry->stored) {
                confirmRecent(*entry);
            }
            records.push_back({entry->key, *entry->record, entry->day});
            entry->stored = entry->valid;
        }
    }
    CacheFileWriter writer(file_, records.size());
    for (const auto& [key, record, day] : records) {
        writer.write(key, record, day);
    }
    const auto written = writer.finish();
    if (written) {
        changes_.restart(*written);
        journal_.clear();
    }
    return written.has_value();
}

bool ProjectCache::save() {
    const std::lock_guard saving(saving_);
    made_.save();
    if (!changed_.exchange(false)) {
        return true;
    }
    savedAt_ = std::chrono::steady_clock::now();
    std::vector<Entry*> unsaved;
    {
        const std::lock_guard lock(unsavedMutex_);
        unsaved.swap(unsaved_);
    }
    const bool whole = wholeIsDue_.exchange(false);
    if ((!whole && appendChanges(unsaved)) || writeWhole()) {
        return true;
    }
    noteWholeIsDue();
    return false;
}

void ProjectCache::Entry::invalidate() {
    valid = false;
    if (record) {
        record = unfinished(*record);
    }
}

void ProjectCache::Entry::endClaim() noexcept {
    claimed = false;
    token = 0;
    released.notify_all();
}

}  // namespace Vesk
