#include "base/console.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

#include "platform/console.h"
#include "platform/environment.h"

namespace Vesk::console {
namespace {

/// Output is handed to the system at this size even when nothing asks for it.
constexpr std::size_t kFlushAt = std::size_t{32} * 1024;

std::atomic<int> currentThreshold{kDefaultThreshold};

bool coloursWanted() {
    static const bool wanted = [] {
        const auto noColor = platform::environmentVariable("NO_COLOR");
        return !noColor || noColor->empty();
    }();
    return wanted;
}

/// What is guarded by the mutex: the prefix and the buffered standard output.
struct Shared {
    std::mutex mutex;
    std::string prefix;
    std::string buffered;

    void flushLocked() noexcept {
        if (!buffered.empty()) {
            platform::writeBytes(platform::Stream::Output, buffered);
            buffered.clear();
        }
    }
};

Shared& shared() {
    // Never destroyed: messages may be written while other statics are being destroyed.
    static auto* instance = new Shared;
    return *instance;
}

void appendEscape(std::string& line, int colour) {
    fmt::format_to(std::back_inserter(line), "\x1b[38;5;{}m", colour);
}

void appendLine(std::string& out, int colour, std::string_view prefix, std::string_view text) {
    const bool escapes = coloursWanted();
    if (escapes) {
        appendEscape(out, colour);
    }
    out += prefix;
    out += text;
    out += escapes ? "\x1b[0m\n" : "\n";
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
    if (!enabled(level)) {
        return;
    }
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
    }
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    if (level < level::kWarning) {
        appendLine(state.buffered, colour, state.prefix, text);
        if (state.buffered.size() >= kFlushAt) {
            state.flushLocked();
        }
        return;
    }
    state.flushLocked();
    std::string line;
    appendLine(line, colour, state.prefix, text);
    platform::writeBytes(platform::Stream::Error, line);
}

std::string coloured(int colour, std::string_view text) {
    if (!coloursWanted()) {
        return std::string(text);
    }
    std::string result;
    appendEscape(result, colour);
    result += text;
    return result;
}

void setPrefix(std::string prefix) {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.prefix = std::move(prefix);
}

void flush() noexcept {
    Shared& state = shared();
    const std::lock_guard lock(state.mutex);
    state.flushLocked();
}

}  // namespace Vesk::console
