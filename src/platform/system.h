// Facts about the system vesk was built for. Portable code asks these instead of the preprocessor.
#pragma once

#include <filesystem>

namespace Vesk::platform {

#ifdef _WIN32
inline constexpr bool kWindows = true;
#else
inline constexpr bool kWindows = false;
#endif

/// Separates the directories of a search path such as PATH.
inline constexpr char kPathListSeparator = kWindows ? ';' : ':';

/// Where output goes that nobody wants to see.
inline constexpr const char* kNullDevice = kWindows ? "NUL" : "/dev/null";

/// Calendar month in the machine's local time.
struct LocalMonth {
    int year;   ///< four digits
    int month;  ///< 1 to 12
};

/// The current local year and month, from one reading of the clock.
LocalMonth currentLocalMonth();

/// A path that leads to the program that is running.
std::filesystem::path executable();

}  // namespace Vesk::platform
