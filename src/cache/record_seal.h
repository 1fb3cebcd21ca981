// How a record in the file shows that it is complete.
//
// A field of the record's first part holds the day on which the record was last asked for and a
// hash of everything else, including the key. A record without a seal was not written by vesk; it
// is kept but answers no request.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/content_hash.h"
#include "base/day_number.h"
#include "cache/cache_record.h"

namespace Vesk {

/// The field's text in a record that is not in a file.
const std::string& openSeal();

/// The day in the record's seal; 0 if there is no seal. Nothing for a damaged record.
std::optional<DayNumber> checkSeal(std::string_view key, const RecordText& record);

/// The hash of the record without its seal, the same in memory and in any file.
ContentHash hashWithoutSeal(const RecordText& record);

/// The same record, which knows its seal, its hash and its table of files from now on. For one that
/// was just made: it is asked for them several times.
RecordText examined(const RecordText& record);

/// Appends a record in the form that it has in the file. Gives the day in its seal; 0 if it has
/// none.
DayNumber appendSealed(std::string& out, std::string_view key, const RecordText& record,
                       DayNumber day);

}  // namespace Vesk
