// The file in which the visits of earlier runs are kept. Whatever it says can be found out again: a
// damaged one is as good as none, and a failure to write it is nobody's concern.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/bytes.h"
#include "base/content_hash.h"
#include "base/day_number.h"
#include "keep/kept_visit.h"
#include "platform/file_view.h"

namespace Vesk {

class VisitStore {
  public:
    /// Next to the cache of the project.
    static constexpr const char* kFileName = ".vesk_cache.visits";

    /// Reads the file. To be called before the run is recorded: the file is no part of the answer.
    void load(const std::filesystem::path& directory);

    /// What is kept under a key; it stays good until the next `put` or `drop` of that key.
    std::optional<KeptVisit> find(const ContentHash& key);

    /// Of all that is kept under a key, but for the record that the visit depends on.
    std::optional<ContentHash> hash(const ContentHash& key);

    /// Tells the record that a visit depends on when all is saved. Nothing: it is not to be kept.
    using RecordHash = std::function<std::optional<ContentHash>()>;

    void put(const ContentHash& key, const KeptVisit& visit, RecordHash record);

    /// In this run the visit goes as it is kept.
    void confirm(const ContentHash& key) { entries_.at(key).stands = true; }

    /// What has been confirmed, or put, in this run. To be called when all is saved.
    std::optional<KeptVisit> findStanding(const ContentHash& key) const;

    /// The same for a text of another kind, that depends on no record.
    std::optional<std::string_view> findText(const ContentHash& key);
    void putText(const ContentHash& key, std::string text);

    /// What is kept goes on with another record.
    void renew(const ContentHash& key, RecordHash record);

    /// Writes what is new behind what is in the file, and now and then all of it. To be called
    /// after the cache has been saved.
    void save();

  private:
    struct Entry {
        std::string_view visit;  ///< encoded
        DayNumber day = 0;       ///< on which it was last asked for
        std::string own;         ///< what `visit` refers to, when it is not from the file
        RecordHash record;       ///< to be asked before saving
        std::optional<ContentHash> renewed = std::nullopt;  ///< the record, if not the encoded one
        bool isNew = false;                                 ///< the file does not have all of this
        bool isInFile = false;                              ///< but it has the visit
        bool stands = false;                                ///< it is how this run's visit went
        std::optional<ContentHash> hash = std::nullopt;     ///< see there; nothing: not asked yet
    };

    struct KeyHash {
        std::size_t operator()(const ContentHash& key) const noexcept {
            return static_cast<std::size_t>(key.low);
        }
    };

    static std::optional<KeptVisit> decoded(const Entry& entry);
    Entry* findEntry(const ContentHash& key);
    void takeBlocks(std::string_view bytes);
    void takeEntries(std::string_view bytes);
    bool takeEntry(Decoder& decoder);
    void setNew(const ContentHash& key, Entry& entry);
    void completeNews();
    std::string newEntries() const;
    std::string allEntries() const;
    bool write(std::string_view bytes, bool isWhole) const;
    void writeBlock(std::string_view start, const std::string& entries);

    std::filesystem::path file_;
    std::optional<platform::FileView> loaded_;
    std::unordered_map<ContentHash, Entry, KeyHash> entries_;
    std::vector<ContentHash> news_;
    std::size_t fileBytes_ = 0;     ///< the file has as many; 0: it is to be written as a whole
    std::size_t writtenBytes_ = 0;  ///< so many when it was last written as a whole
    DayNumber today_ = today();
};

}  // namespace Vesk
