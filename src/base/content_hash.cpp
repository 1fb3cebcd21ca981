#include "base/content_hash.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <xxhash.h>

#include "base/text_hasher.h"
#include "platform/files.h"

namespace Vesk {
namespace {

ContentHash asOurs(const XXH128_hash_t& hash) noexcept {
    return {hash.high64, hash.low64};
}

}  // namespace

struct TextHasher::State {
    XXH3_state_t xxh;
};

TextHasher::TextHasher() : state_(std::make_unique<State>()) {
    XXH3_128bits_reset(&state_->xxh);
}

TextHasher::~TextHasher() = default;

void TextHasher::take(std::string_view piece) noexcept {
    XXH3_128bits_update(&state_->xxh, piece.data(), piece.size());
}

ContentHash TextHasher::hash() const noexcept {
    return asOurs(XXH3_128bits_digest(&state_->xxh));
}

std::optional<ContentHash> hashFile(const std::filesystem::path& path) {
    TextHasher hasher;
    const bool complete =
        platform::readPieces(path, [&hasher](std::string_view piece) { hasher.take(piece); });
    return complete ? std::optional(hasher.hash()) : std::nullopt;
}

namespace {

ContentHash hashOfOne(std::string_view text) noexcept {
    return asOurs(XXH3_128bits(text.data(), text.size()));
}

}  // namespace

ContentHash hashText(std::initializer_list<std::string_view> pieces) {
    if (pieces.size() == 1) {
        return hashOfOne(*pieces.begin());
    }
    // Short texts are copied together: that takes a fraction of what the hasher's state does.
    std::array<char, 1024> together;
    std::size_t size = 0;
    for (const std::string_view piece : pieces) {
        if (piece.size() <= together.size() - std::min(size, together.size())) {
            piece.copy(together.data() + size, piece.size());
        }
        size += piece.size();
    }
    if (size <= together.size()) {
        return hashOfOne({together.data(), size});
    }
    TextHasher hasher;
    for (const std::string_view piece : pieces) {
        hasher.take(piece);
    }
    return hasher.hash();
}

std::string digits(const ContentHash& hash) {
    return fmt::format("{:016x}{:016x}", hash.high, hash.low);
}

}  // namespace Vesk
