#include "base/console.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <vector>

#include "base/collector.h"
#include "base/printable.h"
#include "platform/console.h"
#include "platform/environment.h"

namespace Vesk::console {
namespace {

/// Output is written when it reaches this size, even if nothing asks for it.
constexpr std::size_t kFlushAt = std::size_t{32} * 1024;

std::atomic<int> currentThreshold{kDefaultThreshold};

// A transcript is a row of parts: the letter of the stream, the number of bytes, a blank, the
// bytes.
constexpr char kOutput = 'o';
constexpr char kError = 'e';

void appendPart(std::string& transcript, char stream, std::string_view text) {
    transcript += stream;
    transcript += fmt::format_int(text.size()).c_str();
    transcript += ' ';
    transcript += text;
}

char letterOf(platform::Stream stream) noexcept {
    return stream == platform::Stream::Error ? kError : kOutput;
}

std::size_t lineCount(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::ranges::count(text, '\n'));
}

thread_local Collector* collectorOfThread = nullptr;
thread_local MessageCopy* copyOfThread = nullptr;

/// The state that the mutex guards: the prefix, the buffered standard output, the recorded parts of
/// both streams.
struct Shared {
    std::mutex mutex;
    std::string prefix;
    platform::Stream output = platform::Stream::Output;  ///< where standard output's lines go
    std::string buffered;
    bool failed = false;  ///< part of standard output is lost
    bool keeps = false;
    std::size_t lines = 0;  ///< written so far
    std::string status;     ///< the last line of the terminal
    std::size_t statusColumns = 0;
    bool atLineStart = true;  ///< nobody else can have left a line unfinished
    std::string kept;

    void keepLocked(char stream, std::string_view text) {
        if (keeps) {
            appendPart(kept, stream, text);
        }
    }

    /// To standard output.
    void writeLocked(std::string_view text) {
        buffered += text;
        keepLocked(kOutput, text);
        lines += lineCount(text);
        if (buffered.size() >= kFlushAt) {
            flushLocked();
        }
    }

    void showLocked(char stream, std::string_view text) {
        if (stream == kOutput) {
            writeLocked(text);
        } else {
            keepLocked(stream, text);
            lines += lineCount(text);
            flushLocked();
            platform::writeBytes(platform::Stream::Error, text);
        }
    }

    void flushLocked() noexcept {
        eraseStatusLocked();
        if (!buffered.empty()) {
            failed = !platform::writeBytes(output, buffered) || failed;
            buffered.clear();
            atLineStart = true;
        }
    }

    /// Overwriting with blanks works on every terminal.
    void eraseStatusLocked() {
        if (!status.empty()) {
            std::string blanks = "\r" + std::string(statusColumns, ' ') + "\r";
            buffered.insert(0, blanks);
            status.clear();
        }
    }
};

Shared& shared() {
    // Never destroyed: messages may be written while other statics are being destroyed.
    static auto* instance = new Shared;
    return *instance;
}

struct TranscriptPart {
    char stream = 0;
    std::string_view text;
};

/// Takes the first part off a transcript.
bool takePart(std::string_view& transcript, TranscriptPart& part) {
    part.stream = transcript.front();
    std::size_t size = 0;
    const char* const end = transcript.data() + transcript.size();
    const auto [rest, error] = std::from_chars(transcript.data() + 1, end, size);
    if ((part.stream != kOutput && part.stream != kError) || error != std::errc() || rest == end ||
        *rest != ' ' || size > static_cast<std::size_t>(end - rest - 1)) {
        return false;
    }
    part.text = {rest + 1, size};
    transcript.remove_prefix(static_cast<std::size_t>(rest + 1 - transcript.data()) + size);
    return true;
}

void appendEscape(std::string& line, int colour) {
    line += "\x1b[38;5;";
    line += fmt::format_int(colour).c_str();
    line += 'm';
}

void appendLine(std::string& out, int colour, std::string_view prefix, std::string_view text,
                const SecondColumn& second = {}) {
    const bool escapes = coloursWanted();
    if (escapes) {
        appendEscape(out, colour);
    }
    out += prefix;
    appendPrintable(out, text);
    if (!second.text.empty()) {
        if (escapes) {
            appendEscape(out, second.colour);
        }
        appendPrintable(out, second.text);
    }
    out += escapes ? "\x1b[0m\n" : "\n";
}

void appendMessage(std::string& out, int colour, std::string_view prefix, std::string_view text,
                   const std::vector<std::string>& notes) {
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    appendLine(out, colour, prefix, text);
    for (const std::string& note : notes) {
        std::istringstream lines(note);
        for (std::string line; std::getline(lines, line);) {
            appendLine(out, colour, "  ", line);
        }
    }
}

/// Writes the text that `append` builds when given the prefix.
template <class Append>
void put(int level, Append append) {
    if (!enabled(level)) {
        return;
    }
    if (collectorOfThread != nullptr) {
        std::string lines;
        append(lines, collectorOfThread->prefix());
        collectorOfThread->addMessage(
            level < level::kWarning ? platform::Stream::Output : platform::Stream::Error, lines);
        return;
    }
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    if (copyOfThread != nullptr) {
        std::string lines;
        append(lines, state.prefix);
        const char stream = level < level::kWarning ? kOutput : kError;
        if (copyOfThread->take(stream, lines)) {
            state.showLocked(stream, lines);
        }
        return;
    }
    if (level < level::kWarning) {
        const std::size_t start = state.buffered.size();
        append(state.buffered, state.prefix);
        const std::string_view added = std::string_view(state.buffered).substr(start);
        state.keepLocked(kOutput, added);
        state.lines += lineCount(added);
        if (state.buffered.size() >= kFlushAt) {
            state.flushLocked();
        }
        return;
    }
    std::string lines;
    append(lines, state.prefix);
    state.showLocked(kError, lines);
}

}  // namespace

int threshold() noexcept {
    return currentThreshold.load(std::memory_order_relaxed);
}

void setThreshold(int value) noexcept {
    currentThreshold.store(value, std::memory_order_relaxed);
}

bool enabled(int level) noexcept {
    return level >= threshold();
}

void write(int level, int colour, std::string_view text) {
    write(level, colour, text, {});
}

void write(int level, int colour, std::string_view text, const std::vector<std::string>& notes) {
    put(level, [&](std::string& out, std::string_view prefix) {
        appendMessage(out, colour, prefix, text, notes);
    });
}

void writeAnswer(std::string_view text) {
    if (enabled(level::kError)) {
        const std::lock_guard lock(shared().mutex);
        std::string line;
        appendLine(line, colour::kNormal, {}, text);
        shared().writeLocked(line);
    }
}

void writeColumns(int level, int colour, std::string_view text, const SecondColumn& second) {
    put(level, [&](std::string& out, std::string_view prefix) {
        appendLine(out, colour, prefix, text, second);
    });
}

void setPrefix(std::string prefix) {
    exchangePrefix(std::move(prefix));
}

std::string exchangePrefix(std::string prefix) {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    return std::exchange(state.prefix, std::move(prefix));
}

Collector::Collector(std::string prefix) : prefix_(std::move(prefix)) {
    collectorOfThread = this;
}

Collector::~Collector() {
    collectorOfThread = nullptr;
}

void Collector::endLine() {
    if (const char stream = std::exchange(openStream_, 0)) {
        appendPart(collected_, stream, "\n");
    }
}

std::string Collector::take() {
    endLine();
    return std::exchange(collected_, {});
}

bool collects() noexcept {
    return collectorOfThread != nullptr;
}

void Collector::addMessage(platform::Stream stream, std::string_view lines) {
    endLine();
    appendPart(collected_, letterOf(stream), lines);
}

void Collector::addOutput(platform::Stream stream, std::string_view bytes) {
    const char letter = letterOf(stream);
    if (openStream_ != letter) {
        endLine();
    }
    appendPart(collected_, letter, bytes);
    openStream_ = bytes.back() == '\n' ? '\0' : letter;
}

void writeOutput(platform::Stream stream, std::string_view bytes) {
    if (bytes.empty()) {
        return;
    }
    if (collectorOfThread != nullptr) {
        collectorOfThread->addOutput(stream, bytes);
        return;
    }
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.flushLocked();
    state.atLineStart = false;
    platform::writeBytes(stream == platform::Stream::Error ? stream : state.output, bytes);
}

bool coloursWanted() {
    static const bool wanted = [] {
        const auto noColor = platform::environmentVariable("NO_COLOR");
        return !noColor || noColor->empty();
    }();
    return wanted;
}

void startTranscript() {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.keeps = true;
    state.kept.clear();
}

std::string transcript() {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.keeps = false;
    return std::exchange(state.kept, {});
}

std::string transcriptSoFar() {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    return state.kept;
}

void appendNormal(std::string& transcript, std::string_view prefix, std::string_view text) {
    if (enabled(level::kNormal)) {
        std::string line;
        appendLine(line, colour::kNormal, prefix, text);
        appendPart(transcript, kOutput, line);
    }
}

MessageCopy::MessageCopy(std::string& copy, Shown shown)
    : copy_(copy), shown_(shown), outer_(std::exchange(copyOfThread, this)) {}

MessageCopy::~MessageCopy() {
    copyOfThread = outer_;
}

bool MessageCopy::take(char stream, std::string_view text) {
    appendPart(copy_, stream, text);
    return shown_ == Shown::yes;
}

bool repeat(std::string_view transcript) {
    std::vector<TranscriptPart> parts;
    while (!transcript.empty()) {
        if (!takePart(transcript, parts.emplace_back())) {
            return false;
        }
    }
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    for (const TranscriptPart& part : parts) {
        state.showLocked(part.stream, part.text);
    }
    return true;
}

std::string transcriptText(std::string_view transcript) {
    std::string text;
    TranscriptPart part;
    while (!transcript.empty() && takePart(transcript, part)) {
        text += part.text;
    }
    return text;
}

void flush() noexcept {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.flushLocked();
    state.atLineStart = false;  // a command may write now
}

void showStatus(std::string_view text, std::size_t columns, std::string_view sequence) {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    if (state.status == text && state.buffered.empty() && sequence.empty()) {
        return;
    }
    state.eraseStatusLocked();
    state.buffered += sequence;
    if (!text.empty() && (state.atLineStart || state.buffered.ends_with('\n'))) {
        state.buffered += text;
        state.failed = !platform::writeBytes(state.output, state.buffered) || state.failed;
        state.buffered.clear();
        state.status = text;
        state.statusColumns = columns;
        return;
    }
    state.flushLocked();
}

void keepOutputFree() noexcept {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.flushLocked();
    state.output = platform::Stream::Error;
}

void writeData(std::string_view bytes) noexcept {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.flushLocked();
    state.failed = !platform::writeBytes(platform::Stream::Output, bytes) || state.failed;
}

std::size_t linesWritten() noexcept {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    return state.lines;
}

bool outputIsLost() noexcept {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    return state.failed;
}

}  // namespace Vesk::console
