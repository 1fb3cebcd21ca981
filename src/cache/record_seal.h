// How a record in the file shows that it is all that was written.
//
// A field of the record's first part holds the day on which it was last asked for and a hash of all
// the rest, key included. A record without one is none that was made here; it is kept, but it
// answers no request.
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

/// The day in the record's seal, 0 for a record of others. Nothing for one that is damaged.
std::optional<DayNumber> checkSeal(std::string_view key, const RecordText& record);

/// Of the record without its seal: the same in memory and in any file.
ContentHash hashWithoutSeal(const RecordText& record);

/// Appends a record as it stands in the file.
void appendSealed(std::string& out, std::string_view key, const RecordText& record, DayNumber day);

}  // namespace Vesk
