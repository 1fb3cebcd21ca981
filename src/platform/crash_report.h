// The lines of a crash report, built without the heap: whoever crashes may have broken it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vesk::platform {

/// One line in a fixed buffer; what does not fit is cut. Async-signal-safe.
class CrashLine {
  public:
    CrashLine& text(std::string_view part) noexcept;
    CrashLine& decimal(std::uint64_t value) noexcept;
    /// Upper-case hexadecimal digits, at least `minDigits` of them.
    CrashLine& hex(std::uint64_t value, int minDigits) noexcept;
    /// "0x" and as many digits as a pointer has.
    CrashLine& address(const void* value) noexcept;

    /// Writes the line and a line end to standard error and starts the next one.
    void write() noexcept;

  private:
    static constexpr std::size_t kCapacity = 160;
    std::array<char, kCapacity> buffer_{};
    std::size_t size_ = 0;
};

/// Writes "Stack trace (N frames):" and a line for each frame.
void writeStackTrace(void* const* frames, unsigned count) noexcept;

}  // namespace Vesk::platform
