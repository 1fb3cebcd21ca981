// Day numbers, for things that are kept for a limited time.
#pragma once

#include <cstdint>

#include "platform/files.h"

namespace Vesk {

/// Days since 1970-01-01; 0: not known.
using DayNumber = std::uint32_t;

inline DayNumber today() noexcept {
    constexpr std::int64_t kNanosecondsPerDay = std::int64_t{86'400} * 1'000'000'000;
    return static_cast<DayNumber>(platform::fileClock() / kNanosecondsPerDay);
}

/// How many days something is kept after its last use; its target may be gone for good.
inline constexpr DayNumber kDaysKept = 90;

constexpr bool isOutdated(DayNumber lastUse, DayNumber now) noexcept {
    return lastUse + kDaysKept < now;
}

/// Whether another use is worth noting: what is used more often is not written again each time.
constexpr bool isDueAgain(DayNumber lastUse, DayNumber now) noexcept {
    return lastUse + kDaysKept / 3 <= now;
}

}  // namespace Vesk
