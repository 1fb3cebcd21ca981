// Whether what an earlier build made still stands, and if not, why.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cache/cache_record.h"
#include "cache/file_states.h"
#include "cache/record_files.h"
#include "cache/shadowing.h"
#include "cache/tracked_path.h"

namespace Vesk {

/// Why something is out of date.
struct Reason {
    std::string text;  ///< `C_FLAGS: "-O0" is now "-O2"`, `src/a.h has changed`
    std::string file;  ///< absolute, as FileStates takes it, where one is the reason
};

/// A request held against the record of the last build, if there is one. All that is referred to
/// outlives it.
class Freshness {
  public:
    Freshness(const CacheRequest& request, const RecordText* last, FileStates& states,
              const TrackingRoot& root);

    /// Whether all of the request equals the record and no file has changed.
    bool everything();

    /// Whether a directory where compilers look for headers has got or lost names. The parts that
    /// are fresh all the same have to be watched again.
    bool namesChanged() const noexcept { return namesChanged_; }

    /// What a compiler has read by the record: without the source, and without what its recipe
    /// declares. For a part of the request with its counterpart in the record.
    HeadersRead headersRead(std::size_t part, std::size_t lastPart) const;

    /// After `everything` said yes: whether files were touched; the record then remembers outdated
    /// times, `refreshed` is the one to keep.
    bool touched() const noexcept { return touched_; }
    RecordText refreshed() const;

    /// Whether the result of a recipe's part still stands. Looks at the files again: steps of the
    /// build that have run meanwhile may have changed them.
    bool fresh(std::size_t part);

    /// The number of the record's part that stands for the request's; nothing without one.
    std::optional<std::size_t> lastPart(std::size_t part) const;
    const std::vector<RecordText::Part>& lastParts() const noexcept { return layout_.parts; }
    const std::vector<RecordFile>& lastFiles() const noexcept { return files_; }

    /// What differs, at most so many: the first difference in the texts, or the files. Empty when
    /// nothing does.
    std::vector<Reason> reasons(std::size_t most);

    /// The first of them, or nothing.
    std::string reason();

  private:
    std::string textReason() const;
    std::vector<Reason> fileReasons(std::size_t most);
    bool sameText() const;
    bool samePart(std::size_t part) const;
    bool tellsOfFiles() const;
    bool filesUnchanged(std::size_t lastPart, std::string_view field, std::size_t expected);
    bool partUnchanged(std::size_t lastPart, const CacheRequest::Part& wanted);
    bool unchanged(const RecordFile& file);
    bool headersStand(std::size_t part, std::size_t lastPart);
    bool sameNames(std::size_t lastPart);
    bool isWatched(const std::string& names);

    const CacheRequest& request_;
    const RecordText* last_;  ///< null: there is none
    bool damaged_ = false;    ///< the record's table of files cannot be read
    FileStates& states_;
    const TrackingRoot& root_;
    RecordText::Layout layout_;
    std::vector<RecordFile> files_;
    mutable std::unordered_map<std::string_view, std::size_t> partsByInputs_;
    bool touched_ = false;
    bool namesChanged_ = false;
    std::unordered_set<std::string> watched_;  ///< every namesPath of the record
    std::unordered_set<std::string> free_;     ///< places where there is no header
    bool watchIsOutdated_ = false;  ///< directories have appeared of which the record knows nothing
    std::string shadow_;            ///< the place of a header that takes the place of another
};

}  // namespace Vesk
