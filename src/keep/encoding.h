// Values as bytes, to be kept from run to run.
//
// What resolving would change, or what refers to something else, is not encoded: the caller has to
// do without. Equal bytes mean equal values, the places where they were written included.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/content_hash.h"
#include "types/context/context.h"

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

/// Nothing for a value that cannot be encoded.
std::optional<std::string> encoded(const std::vector<ValuePtr>& values);
std::optional<std::string> encoded(const Context& resolved);

/// Nothing for bytes that no value has been encoded to.
std::optional<std::vector<ValuePtr>> decodedValues(std::string_view bytes);

/// Null for such bytes.
std::shared_ptr<Context> decodedContext(std::string_view bytes);

}  // namespace Vesk
