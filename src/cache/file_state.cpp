#include "cache/file_state.h"

#include <charconv>
#include <fmt/format.h>
#include <iterator>
#include <memory>
#include <xxhash.h>

#include "platform/files.h"

namespace Vesk {
namespace {

constexpr int kHex = 16;

struct HasherDeleter {
    void operator()(XXH3_state_t* state) const noexcept { XXH3_freeState(state); }
};

class Hasher {
  public:
    Hasher() { XXH3_128bits_reset(state()); }

    void take(std::string_view piece) { XXH3_128bits_update(state(), piece.data(), piece.size()); }

    ContentHash hash() const {
        const XXH128_hash_t hash = XXH3_128bits_digest(state());
        return {hash.high64, hash.low64};
    }

  private:
    /// One for a thread: it is large, and only one hash is made at a time.
    static XXH3_state_t* state() {
        thread_local const std::unique_ptr<XXH3_state_t, HasherDeleter> state(XXH3_createState());
        return state.get();
    }
};

/// Takes a number and the blank after it.
template <class Number>
bool takeNumber(std::string_view& text, Number& number, int base = 10) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end == text.data() + text.size() || *end != ' ') {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return true;
}

bool isKind(char letter) {
    return std::string_view("-dnofr?").find(letter) != std::string_view::npos;
}

}  // namespace

std::optional<ContentHash> hashFile(const std::filesystem::path& path) {
    Hasher hasher;
    const bool complete =
        platform::readPieces(path, [&hasher](std::string_view piece) { hasher.take(piece); });
    return complete ? std::optional(hasher.hash()) : std::nullopt;
}

ContentHash hashText(std::initializer_list<std::string_view> pieces) {
    Hasher hasher;
    for (const std::string_view piece : pieces) {
        hasher.take(piece);
    }
    return hasher.hash();
}

std::string digits(const ContentHash& hash) {
    return fmt::format("{:016x}{:016x}", hash.high, hash.low);
}

void appendStateLine(std::string& table, const FileState& state, std::string_view path) {
    fmt::format_to(std::back_inserter(table), "{} {:x} {:x} {} {} {} {:x} {:x} {}\n",
                   static_cast<char>(state.kind), state.device, state.number, state.size,
                   state.modified, state.changed, state.hash.high, state.hash.low, path);
}

bool takeStateLine(std::string_view& table, FileState& state, std::string_view& path) {
    const std::size_t end = table.find('\n');
    if (end == std::string_view::npos) {
        return false;
    }
    std::string_view line = table.substr(0, end);
    if (line.size() < 2 || !isKind(line[0]) || line[1] != ' ') {
        return false;
    }
    state.kind = static_cast<FileState::Kind>(line[0]);
    line.remove_prefix(2);
    if (!takeNumber(line, state.device, kHex) || !takeNumber(line, state.number, kHex) ||
        !takeNumber(line, state.size) || !takeNumber(line, state.modified) ||
        !takeNumber(line, state.changed) || !takeNumber(line, state.hash.high, kHex) ||
        !takeNumber(line, state.hash.low, kHex)) {
        return false;
    }
    path = line;
    table.remove_prefix(end + 1);
    return true;
}

}  // namespace Vesk
