// Where something is written in a file, and how a message shows it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

/// Small enough to be part of every assignment. Lines and columns are counted from 1, columns in
/// code points.
struct SourcePlace {
    std::uint32_t file = 0;  ///< from `sourceFileNumber`; 0: not in a file
    std::uint32_t line = 0;
    std::uint32_t column = 0;
};

/// The number that stands for a file in places until the process ends. May be called from any
/// thread.
std::uint32_t sourceFileNumber(const std::string& name);

/// The name that a number stands for; empty for 0.
std::string sourceFileName(std::uint32_t number);

/// "/a/vesk.txt:2:8", that line of the file, which is read again, and a caret below the column.
/// Only the first if the file has no such line any more; nothing for a place that is not in a file.
/// A long line is cut to the part around the column.
std::vector<std::string> placeLines(const SourcePlace& place);

/// The same for a text in memory.
std::vector<std::string> placeLines(std::string_view fileName, std::string_view text,
                                    std::size_t line, std::size_t column);

/// The text from that place on; empty if there is no such place.
std::string_view textFrom(std::string_view text, std::size_t line, std::size_t column);

}  // namespace Vesk
