// What the cache remembers of a file to tell later whether it has changed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/content_hash.h"
#include "platform/files.h"

namespace Vesk {

struct FileState {
    enum class Kind : char {
        Missing = '-',
        Directory = 'd',  ///< only its existence counts
        Names = 'n',      ///< of a directory: which names it contains (see namesPath)
        Other = 'o',      ///< a device, a pipe, a socket: only its existence counts; never opened
        File = 'f',
        Recent = 'r',   ///< changed too recently for its times to be reliable: content decides
        Unknown = '?',  ///< changed while in use, or cannot be examined: never equal
    };

    Kind kind = Kind::Missing;
    std::uint64_t device = 0;  ///< these, except the hash, as in platform::FileStatus
    std::uint64_t number = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;
    ContentHash hash;
};

/// The status of a file that was in this state, which is of kind File.
platform::FileStatus statusOf(const FileState& state) noexcept;

/// Appends a line "kind device number size modified changed hash path" to a record's table of
/// files.
void appendStateLine(std::string& table, const FileState& state, std::string_view path);

/// Takes the first line off a table. False at its end and for a malformed line.
bool takeStateLine(std::string_view& table, FileState& state, std::string_view& path);

}  // namespace Vesk
