// The standard streams of the process, as bytes. No buffering and no line-end translation: what is
// written is what arrives.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace Vesk::platform {

enum class Stream { Output, Error };

/// Prepares the console: on Windows switches escape processing on where the handle is a console
/// and sets UTF-8 as the console's code page (restored at exit).
void prepareConsole();

/// Writes all bytes. False when the stream does not take them, as one on a full disk. A pipe whose
/// reader has gone takes them all: that reader wanted no more.
bool writeBytes(Stream stream, std::string_view bytes) noexcept;

/// Reads at most so many bytes of standard input, and waits until there are some. 0 at the end of
/// the input, and when it cannot be read.
std::size_t readInput(char* buffer, std::size_t size) noexcept;

/// How many columns the terminal has that the stream is; nothing for a stream that is none, and on
/// Windows for a console without escape processing.
std::optional<unsigned> terminalWidth(Stream stream) noexcept;

}  // namespace Vesk::platform
