// The files of a record: their states, and which part uses which.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cache/cache_record.h"
#include "cache/file_state.h"
#include "cache/record_fields.h"

namespace Vesk {

struct RecordFile {
    std::string_view path;  ///< as TrackingRoot stores it
    FileState state;
    std::string_view line = {};  ///< of the table, with its line end; empty: it is to be written

    void setState(const FileState& now) {
        state = now;
        line = {};
    }
};

/// The table of a record, given its parts. Refers to the record's text. Nothing if the table is
/// faulty.
std::optional<std::vector<RecordFile>> filesOf(const std::vector<RecordText::Part>& parts);

/// The same for a record whose other parts are of no concern.
std::optional<std::vector<RecordFile>> filesOf(const RecordText& record);

/// The text of the table; empty if there is none.
std::string_view tableOf(const RecordText& record);

/// The numbers of a part's files in that table, under kReads or kWrites. Nothing if one of them is
/// not a number below `limit`.
std::optional<std::vector<std::size_t>> fileNumbers(const RecordText::Part& part,
                                                    std::string_view field, std::size_t limit);

/// A record taken apart.
class RecordContent {
  public:
    /// The numbers of a part's files; nothing if they are faulty.
    using Numbers = std::optional<std::vector<std::size_t>>;

    explicit RecordContent(const RecordText& record);

    const std::vector<RecordText::Part>& parts() const noexcept { return layout_.parts; }
    std::string_view environment() const noexcept { return layout_.environment; }

    /// Empty if the table is faulty.
    const std::vector<RecordFile>& files() const noexcept { return files_; }
    bool isFaulty() const noexcept { return isFaulty_; }

    const Numbers& reads(std::size_t part) const;
    const Numbers& writes(std::size_t part) const;

  private:
    void findNumbers() const;

    std::shared_ptr<const void> storage_;  ///< keeps the text alive
    RecordText::Layout layout_;
    std::vector<RecordFile> files_;
    bool isFaulty_ = false;
    mutable std::once_flag numbersFound_;
    mutable std::vector<Numbers> reads_;
    mutable std::vector<Numbers> writes_;
};

/// The one that is kept with the record, or a new one.
std::shared_ptr<const RecordContent> contentOf(const RecordText& record);

/// The files that any part has written, each once. Refers to the record's text.
std::vector<RecordFile> filesWritten(const RecordText& record);

/// The text of a field in a part's outputs; empty if there is none.
std::string_view fieldOf(const RecordText::Part& part, std::string_view field);

/// How long the part's recipe took; 0 if that is not known.
double secondsIn(const RecordText::Part& part);

/// What not running a record's recipes saves.
struct KeptSteps {
    std::size_t steps = 0;
    double seconds = 0;  ///< as far as it is known
};
KeptSteps stepsIn(const RecordText& record);

/// The same record with these files, some perhaps in other states, in its table.
RecordText withFiles(const RecordText& record, const std::vector<RecordFile>& files);

/// The files of the record's table whose content decides, as they had changed just before they were
/// examined. Empty for a faulty table.
std::vector<RecordFile> recentFiles(const RecordText& record);

/// The same record, in which the times of these files of it are reliable.
RecordText confirmed(const RecordText& record, const std::vector<RecordFile>& recent);

/// The same record, marked as that of an unfinished build.
RecordText unfinished(const RecordText& record);

/// The outputs that a record keeps, without the cache's own fields. Relative paths in them start
/// from `base`.
std::vector<Assignment> outputsOf(const RecordText& record, const std::filesystem::path& base);

/// The stamp of the build; empty if its outputs tell enough.
std::string stampOf(const RecordText& record);

}  // namespace Vesk
