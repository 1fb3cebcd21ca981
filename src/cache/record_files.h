// The files of a record: their states, and which part uses which.
#pragma once

#include <cstddef>
#include <cstdint>
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
    std::string_view line = {};  ///< of the table, with its line end
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

/// The same record with other states in its table.
RecordText withFiles(const RecordText& record, const std::vector<RecordFile>& files);

/// The same record, marked as that of an unfinished build.
RecordText unfinished(const RecordText& record);

/// The outputs that a record keeps, without the cache's own fields. Relative paths in them start
/// from `base`.
std::vector<Assignment> outputsOf(const RecordText& record, const std::filesystem::path& base);

/// The stamp of the build; empty if its outputs tell enough.
std::string stampOf(const RecordText& record);

}  // namespace Vesk
