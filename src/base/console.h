// The one place that writes messages.
//
// A message has a level and a colour. It is written if its level is at least the process-wide
// threshold. Levels 6 and 7 go to standard error, all others to standard output. Standard output is
// buffered. It is flushed before anything goes to standard error, and by `flush`, which must be
// called before a child process starts, so that a log shows events in the order in which they
// happened.
//
// All functions may be called from any thread.
#pragma once

#include <fmt/format.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vesk::console {

/// Message levels; a larger threshold makes a quieter program.
namespace level {
inline constexpr int kMatch = 0;    ///< why a tool fits a target
inline constexpr int kTrace = 1;    ///< project discovery, visits, cache decisions
inline constexpr int kClaim = 2;    ///< oddities of cache claims
inline constexpr int kDetail = 3;   ///< tool choice, contexts
inline constexpr int kSubject = 4;  ///< variables that do not take part in a match
inline constexpr int kNormal = 5;
inline constexpr int kWarning = 6;
inline constexpr int kError = 7;
}  // namespace level

/// ANSI 256-colour foreground numbers.
namespace colour {
inline constexpr int kError = 31;
inline constexpr int kSecondColumn = 32;  ///< second column of a target listing
inline constexpr int kWarning = 33;
inline constexpr int kTrace = 35;
inline constexpr int kReport = 36;  ///< the tool selection report
inline constexpr int kNormal = 37;
}  // namespace colour

inline constexpr int kDefaultThreshold = 5;

int threshold() noexcept;
void setThreshold(int value) noexcept;

/// Whether a message of this level would be written. Ask before building an expensive text.
bool enabled(int level) noexcept;

/// Writes one message line: prefix and text in the colour, the colour's end, a line end. A line end
/// at the end of the text is dropped first. Control characters, which could affect the terminal,
/// are shown as "\x1b"; tabs and line ends stay.
void write(int level, int colour, std::string_view text);

/// The same, with each note that is not empty on its own line below, indented by two blanks. No
/// other message comes between.
void write(int level, int colour, std::string_view text, const std::vector<std::string>& notes);

/// A line that the user asked for with an option: it has no prefix, and only a threshold that hides
/// errors hides it.
void writeAnswer(std::string_view text);

/// The part of a message behind its text, in its own colour.
struct SecondColumn {
    int colour = colour::kNormal;
    std::string_view text;
};

/// A message line with a second column.
void writeColumns(int level, int colour, std::string_view text, const SecondColumn& second);

template <class... Args>
void message(int level, int colour, fmt::format_string<Args...> format, Args&&... args) {
    if (enabled(level)) {
        write(level, colour, fmt::format(format, std::forward<Args>(args)...));
    }
}

template <class... Args>
void normal(fmt::format_string<Args...> format, Args&&... args) {
    message(level::kNormal, colour::kNormal, format, std::forward<Args>(args)...);
}

template <class... Args>
void trace(fmt::format_string<Args...> format, Args&&... args) {
    message(level::kTrace, colour::kTrace, format, std::forward<Args>(args)...);
}

template <class... Args>
void warning(fmt::format_string<Args...> format, Args&&... args) {
    message(level::kWarning, colour::kWarning, format, std::forward<Args>(args)...);
}

template <class... Args>
void error(fmt::format_string<Args...> format, Args&&... args) {
    message(level::kError, colour::kError, format, std::forward<Args>(args)...);
}

/// The text that stands before every message, normally "[unit::target] ".
void setPrefix(std::string prefix);

/// Whether colour escapes are written.
bool coloursWanted();

/// From now on everything that is written is also recorded.
void startTranscript();

/// Stops recording and returns what was recorded, in the form that `repeat` takes.
std::string transcript();

/// What has been recorded so far.
std::string transcriptSoFar();

/// Appends a message to a transcript as `normal` would write it, after this prefix.
void appendNormal(std::string& transcript, std::string_view prefix, std::string_view text);

/// During its lifetime, the messages that this thread writes itself are also copied to a text, in
/// the form of a transcript.
class MessageCopy {
  public:
    enum class Shown { yes, no };  ///< `no`: only the copy is made

    explicit MessageCopy(std::string& copy, Shown shown = Shown::yes);
    ~MessageCopy();
    MessageCopy(const MessageCopy&) = delete;
    MessageCopy& operator=(const MessageCopy&) = delete;

    /// Copies a part of standard output (`o`) or standard error (`e`). Returns whether it is to be
    /// shown.
    bool take(char stream, std::string_view text);

  private:
    std::string& copy_;
    Shown shown_;
    MessageCopy* outer_;
};

/// Writes the contents of a transcript again, each part to its stream. False, with nothing written,
/// for bytes that are not a transcript.
bool repeat(std::string_view transcript);

/// Sets the last line of a terminal, a text of so many columns that stays below everything that is
/// written. It is erased before anything else is written and before a child starts, and comes back
/// with the next call. An empty text removes it. `sequence` is sent to the terminal and takes no
/// room. The line is not shown while a command may have left its last line unfinished.
void showStatus(std::string_view text, std::size_t columns, std::string_view sequence);

/// Reserves standard output for `writeData`: everything else goes to standard error from now on.
void keepOutputFree() noexcept;

/// Writes bytes to standard output as they are.
void writeData(std::string_view bytes) noexcept;

/// How many lines have been written so far to both streams, not counting those that commands write
/// to the streams directly.
std::size_t linesWritten() noexcept;

/// Writes the buffered standard output.
void flush() noexcept;

/// Whether some of the standard output could not be written: a full disk, a closed pipe.
bool outputIsLost() noexcept;

}  // namespace Vesk::console
