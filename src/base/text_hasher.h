// The hash of a text that comes in pieces.
#pragma once

#include <memory>
#include <string_view>

#include "base/content_hash.h"

namespace Vesk {

/// Gives what `hashText` gives for the whole text.
class TextHasher {
  public:
    TextHasher();
    ~TextHasher();
    TextHasher(const TextHasher&) = delete;
    TextHasher& operator=(const TextHasher&) = delete;

    void take(std::string_view piece) noexcept;
    ContentHash hash() const noexcept;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace Vesk
