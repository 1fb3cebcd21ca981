// The file in which the visits of earlier runs are kept. Whatever it says can be found out again: a
// damaged one is as good as none, and a failure to write it is nobody's concern.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/content_hash.h"
#include "base/day_number.h"
#include "keep/kept_visit.h"

namespace Vesk {

class VisitStore {
  public:
    /// Next to the cache of the project.
    static constexpr const char* kFileName = ".vesk_cache.visits";

    /// Reads the file. To be called before the run is recorded: the file is no part of the answer.
    void load(const std::filesystem::path& directory);

    /// What is kept under a key; it stays good until the next `put` or `drop` of that key.
    std::optional<KeptVisit> find(const ContentHash& key);

    /// Tells the record that a visit depends on when all is saved. Nothing: it is not to be kept.
    using RecordHash = std::function<std::optional<ContentHash>()>;

    void put(const ContentHash& key, const KeptVisit& visit, RecordHash record);

    /// What is kept goes on with another record.
    void renew(const ContentHash& key, RecordHash record);

    /// Writes the file if there is news. To be called after the cache has been saved.
    void save();

  private:
    struct Entry {
        std::string_view visit;  ///< encoded
        DayNumber day = 0;       ///< on which it was last asked for
        std::string own;         ///< what `visit` refers to, when it is not from the file
        RecordHash record;       ///< to be asked before saving
    };

    struct KeyHash {
        std::size_t operator()(const ContentHash& key) const noexcept {
            return static_cast<std::size_t>(key.low);
        }
    };

    void takeEntries(std::string_view bytes);
    std::string bytes();

    std::filesystem::path file_;
    std::string loaded_;
    std::unordered_map<ContentHash, Entry, KeyHash> entries_;
    DayNumber today_ = today();
    bool changed_ = false;
};

}  // namespace Vesk
