// The files of a record: what they were like, and which part uses which.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cache/cache_record.h"
#include "cache/file_state.h"
#include "cache/record_fields.h"

namespace Vesk {

struct RecordFile {
    std::string_view path;  ///< as TrackingRoot stores it
    FileState state;
};

/// The table of a record, given its parts. Refers to the record's text. Nothing when it has a
/// fault.
std::optional<std::vector<RecordFile>> filesOf(const std::vector<RecordText::Part>& parts);

/// Numbers of a part's files in that table, under kReads or kWrites. Nothing when one of them is
/// none or is not below `limit`.
std::optional<std::vector<std::size_t>> fileNumbers(const RecordText::Part& part,
                                                    std::string_view field, std::size_t limit);

/// The files that any of its parts has written, each once. Refers to the record's text.
std::vector<RecordFile> filesWritten(const RecordText& record);

/// The text of a field of a part's outputs; empty without one.
std::string_view fieldOf(const RecordText::Part& part, std::string_view field);

/// How long the part's recipe took; 0 where that is not known.
double secondsIn(const RecordText::Part& part);

/// The same record with other states in the table.
RecordText withFiles(const RecordText& record, const std::vector<RecordFile>& files);

/// The same record as one of a build that did not finish.
RecordText unfinished(const RecordText& record);

/// The outputs that a record keeps, apart from the cache's own fields. Relative paths in them start
/// from `base`.
std::vector<Assignment> outputsOf(const RecordText& record, const std::filesystem::path& base);

/// The stamp of the build; empty where its outputs tell enough.
std::string stampOf(const RecordText& record);

/// A table that is being filled, each file once.
class FileTable {
  public:
    bool contains(std::string_view stored) const { return numbers_.contains(std::string(stored)); }

    /// The number of a file that is there.
    std::size_t numberOf(std::string_view stored) const { return numbers_.at(std::string(stored)); }

    std::size_t add(std::string_view stored, const FileState& state);

    const std::string& text() const noexcept { return text_; }

  private:
    std::unordered_map<std::string, std::size_t> numbers_;
    std::string text_;
};

}  // namespace Vesk
