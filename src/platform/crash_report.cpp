#include "platform/crash_report.h"

#include <algorithm>

#include "platform/console.h"

namespace Vesk::platform {

CrashLine& CrashLine::text(std::string_view part) noexcept {
    // One byte stays free for the line end.
    const std::size_t count = std::min(part.size(), kCapacity - 1 - size_);
    std::copy_n(part.data(), count, buffer_.data() + size_);
    size_ += count;
    return *this;
}

CrashLine& CrashLine::decimal(std::uint64_t value) noexcept {
    std::array<char, 20> digits{};
    std::size_t first = digits.size();
    do {
        digits[--first] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    return text({digits.data() + first, digits.size() - first});
}

CrashLine& CrashLine::hex(std::uint64_t value, int minDigits) noexcept {
    std::array<char, 16> digits{};
    std::size_t first = digits.size();
    do {
        digits[--first] = "0123456789ABCDEF"[value & 15];
        value >>= 4;
        --minDigits;
    } while (first > 0 && (value != 0 || minDigits > 0));
    return text({digits.data() + first, digits.size() - first});
}

CrashLine& CrashLine::address(const void* value) noexcept {
    return text("0x").hex(reinterpret_cast<std::uintptr_t>(value), 2 * sizeof(void*));
}

void CrashLine::write() noexcept {
    buffer_[size_++] = '\n';
    writeBytes(Stream::Error, {buffer_.data(), size_});
    size_ = 0;
}

void writeStackTrace(void* const* frames, unsigned count) noexcept {
    CrashLine line;
    line.text("Stack trace (").decimal(count).text(" frames):").write();
    for (unsigned i = 0; i < count; ++i) {
        line.text("  [").decimal(i).text("] ").address(frames[i]).write();
    }
}

}  // namespace Vesk::platform
