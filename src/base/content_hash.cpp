#include "base/content_hash.h"

#include <fmt/format.h>
#include <memory>
#include <xxhash.h>

#include "platform/files.h"

namespace Vesk {
namespace {

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
    /// One per thread: it is large, and a thread makes only one hash at a time.
    static XXH3_state_t* state() {
        thread_local const std::unique_ptr<XXH3_state_t, HasherDeleter> state(XXH3_createState());
        return state.get();
    }
};

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

}  // namespace Vesk
