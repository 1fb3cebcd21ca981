// Owner of a file descriptor.
#pragma once

#include <unistd.h>
#include <utility>

namespace Vesk::platform {

class Descriptor {
  public:
    explicit Descriptor(int value) noexcept : value_(value) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : value_(other.release()) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool valid() const noexcept { return value_ >= 0; }
    int get() const noexcept { return value_; }
    int release() noexcept { return std::exchange(value_, -1); }

    /// False when the system reports, only now, that written data is lost.
    bool close() noexcept { return value_ < 0 || ::close(release()) == 0; }

  private:
    int value_;
};

}  // namespace Vesk::platform
