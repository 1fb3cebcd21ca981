// The two output streams of the process, as bytes. No buffering and no line-end translation: what
// is written is what arrives.
#pragma once

#include <string_view>

namespace Vesk::platform {

enum class Stream { Output, Error };

/// Prepares the console: on Windows switches escape processing on where the handle is a console
/// and sets UTF-8 as the console's code page (restored at exit).
void prepareConsole();

/// Writes all bytes. A stream that is closed or full swallows them: false then, and nothing throws.
bool writeBytes(Stream stream, std::string_view bytes) noexcept;

}  // namespace Vesk::platform
