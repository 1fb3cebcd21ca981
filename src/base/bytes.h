// Numbers, texts and hashes as bytes, for files that only vesk reads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/content_hash.h"

namespace Vesk {

/// Appends one thing after the other.
class Encoder {
  public:
    void number(std::uint64_t number);
    void piece(std::string_view piece);
    void hash(const ContentHash& hash);

    std::string bytes;
};

/// Takes one thing after the other off the front. After the first that is not there all are empty,
/// and `good` is false.
class Decoder {
  public:
    explicit Decoder(std::string_view bytes) : rest_(bytes) {}

    std::uint64_t number();
    std::string_view piece();
    ContentHash hash();
    bool good() const noexcept { return good_; }
    bool atEnd() const noexcept { return rest_.empty(); }

  private:
    std::string_view take(std::size_t size);

    std::string_view rest_;
    bool good_ = true;
};

}  // namespace Vesk
