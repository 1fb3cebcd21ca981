// Whether the result of an earlier build still stands, and if not, why.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cache/cache_record.h"
#include "cache/difference.h"
#include "cache/file_states.h"
#include "cache/record_files.h"
#include "cache/shadowing.h"
#include "cache/tracked_path.h"

namespace Vesk {

/// Why something is out of date: `C_FLAGS: "-O0" is now "-O2"`, `src/a.h has changed`.
struct Reason : Difference {
    std::string file;  ///< the file that is the reason, if any: absolute, as FileStates takes it
};

/// A request compared with the record of the last build, if there is one. Everything passed by
/// reference must outlive it.
class Freshness {
  public:
    Freshness(const CacheRequest& request, const RecordText* last, FileStates& states,
              const TrackingRoot& root);

    /// Whether the whole request equals the record and no file has changed.
    bool everything();

    /// Whether a directory where compilers look for headers has gained or lost names. Parts that
    /// are fresh nevertheless must be watched again.
    bool namesChanged() const noexcept { return namesChanged_; }

    /// What a compiler has read according to the record, without the source and without what its
    /// recipe declares. Only for a part of the request that has a counterpart in the record.
    HeadersRead headersRead(std::size_t part, std::size_t lastPart) const;

    /// After `everything` returned true: whether files were touched. Then the record holds outdated
    /// times, and `refreshed` is the one to keep.
    bool touched() const noexcept { return touched_; }
    RecordText refreshed() const;

    /// Whether the result of a recipe's part still stands. Looks at the files again, since steps of
    /// the build may have changed them meanwhile.
    bool fresh(std::size_t part);

    /// The number of the record's part that corresponds to the request's; nothing if there is none.
    std::optional<std::size_t> lastPart(std::size_t part) const;
    const std::vector<RecordText::Part>& lastParts() const noexcept { return content_->parts(); }
    const std::vector<RecordFile>& lastFiles() const noexcept { return content_->files(); }

    /// The numbers of a record's part's files.
    using Numbers = RecordContent::Numbers;
    const Numbers& lastReads(std::size_t lastPart) const { return content_->reads(lastPart); }
    const Numbers& lastWrites(std::size_t lastPart) const { return content_->writes(lastPart); }

    /// The files that any part of the record has written, each once.
    std::vector<RecordFile> filesWritten() const;

    /// One of the last files, by its number.
    FileStates::File lastFile(std::size_t number) const;

    /// At most `most` differences: the first difference in the texts, or the files. Empty if
    /// nothing differs.
    std::vector<Reason> reasons(std::size_t most);

    /// The first of them, or an empty text.
    std::string reason();

  private:
    Difference textReason() const;
    std::vector<Reason> fileReasons(std::size_t most);
    bool sameText() const;
    bool samePart(std::size_t part) const;
    bool tellsOfFiles() const;
    bool unchanged(const Numbers& files, std::size_t expected);
    bool partUnchanged(std::size_t lastPart, const CacheRequest::Part& wanted);
    bool unchanged(std::size_t file);
    FileStates::Comparison compared(std::size_t file) const;
    bool headersStand(std::size_t part, std::size_t lastPart);
    bool sameNames(std::size_t lastPart);
    bool isWatched(const std::string& names);

    const CacheRequest& request_;
    const RecordText* last_;  ///< null if there is none
    FileStates& states_;
    const TrackingRoot& root_;
    std::shared_ptr<const RecordContent> content_;  ///< without parts if there is none
    mutable std::vector<std::optional<FileStates::File>> tracked_;  ///< its files, when asked for
    mutable std::unordered_map<std::string_view, std::size_t> partsByInputs_;
    bool touched_ = false;
    bool namesChanged_ = false;
    std::unordered_set<std::string> watched_;  ///< every namesPath of the record
    std::unordered_set<std::string> free_;     ///< places where there is no header
    bool watchIsOutdated_ = false;             ///< the record does not know some new directories
    std::string shadow_;                       ///< where a header has appeared that hides another
};

}  // namespace Vesk
