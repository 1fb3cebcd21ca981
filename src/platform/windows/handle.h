// Owner of a system handle.
#pragma once

#include <utility>
#include <windows.h>

namespace Vesk::platform {

class Handle {
  public:
    explicit Handle(HANDLE value) noexcept : value_(value) {}
    ~Handle() { close(); }
    Handle(Handle&& other) noexcept : value_(other.release()) {}
    Handle& operator=(Handle&& other) noexcept {
        if (this != &other) {
            close();
            value_ = other.release();
        }
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    /// The system's functions disagree on which value means failure; both are invalid here.
    bool valid() const noexcept { return value_ != nullptr && value_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const noexcept { return value_; }
    HANDLE release() noexcept { return std::exchange(value_, nullptr); }
    bool close() noexcept { return !valid() || ::CloseHandle(release()) != 0; }

  private:
    HANDLE value_;
};

}  // namespace Vesk::platform
