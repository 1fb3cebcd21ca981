#include "types/values/value_size.h"

#include <fmt/format.h>

#include "base/interruption.h"
#include "types/values/errors.h"

namespace Vesk {
namespace {

[[noreturn]] void throwTooLarge(const std::string& text) {
    VeskException error(text);
    error.addNote("does it refer to itself through other variables?");
    throw error;
}

}  // namespace

void ValueSize::addBytes(std::size_t bytes) {
    bytes_ += bytes;
    checkTextSize(bytes_);
}

void ValueSize::add(const VeskValue& value) {
    struct Deeper {
        explicit Deeper(std::size_t& depth) : depth_(depth) { ++depth_; }
        ~Deeper() { --depth_; }
        std::size_t& depth_;
    };
    stopIfInterrupted();
    addBytes(kElementBytes);
    const Deeper deeper(depth_);
    if (depth_ > kMaxValueNesting) {
        throwTooLarge(fmt::format(
            "A value has more than {} lists and contexts nested in each other.", kMaxValueNesting));
    }
    value.addTo(*this);
}

void checkTextSize(std::size_t bytes) {
    if (bytes > kMaxValueBytes) {
        throwTooLarge(fmt::format("A value grows beyond {} MiB.",
                                  kMaxValueBytes / (std::size_t{1024} * 1024)));
    }
}

void checkSize(const VeskValue& value) {
    ValueSize().add(value);
}

}  // namespace Vesk
