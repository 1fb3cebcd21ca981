// What the cache remembers of a file to tell later whether it has changed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/content_hash.h"

namespace Vesk {

struct FileState {
    enum class Kind : char {
        Missing = '-',
        Directory = 'd',  ///< that it is there is all that counts
        Names = 'n',      ///< of a directory, which names are in it (see namesPath)
        Other = 'o',      ///< a device, a pipe, a socket: the same; it is never opened
        File = 'f',
        Recent = 'r',  ///< a file that changed too recently for its times to tell: content decides
        Unknown =
            '?',  ///< it changed while it was being used, or cannot be examined: equal to none
    };

    Kind kind = Kind::Missing;
    std::uint64_t device = 0;  ///< all but the hash as in platform::FileStatus
    std::uint64_t number = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;
    ContentHash hash;
};

/// A line "kind device number size modified changed hash path", as a table of files in a record
/// holds it.
void appendStateLine(std::string& table, const FileState& state, std::string_view path);

/// Takes the first line off a table. False at its end and for a line that is none of those.
bool takeStateLine(std::string_view& table, FileState& state, std::string_view& path);

}  // namespace Vesk
