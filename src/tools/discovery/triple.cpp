#include "tools/discovery/triple.h"

#include <algorithm>
#include <array>
#include <initializer_list>

#include "base/ci_string.h"
#include "platform/system.h"

namespace Vesk {

namespace {

// The machine for which vesk itself was compiled.
#if defined(__aarch64__)
constexpr std::string_view kMachines[] = {"aarch64", "arm64"};
#else
constexpr std::string_view kMachines[] = {"x86_64", "amd64"};
#endif

bool contains(std::string_view text, std::initializer_list<std::string_view> words) noexcept {
    return std::ranges::any_of(
        words, [text](std::string_view word) { return text.find(word) != std::string_view::npos; });
}

/// The names in use for one machine, padded with empty ones.
constexpr std::array<std::string_view, 5> kMachineNames[] = {
    {"x86_64", "x64", "amd64"},
    {"i686", "x86", "i386", "i486", "i586"},
    {"aarch64", "arm64"},
};

bool sameMachine(std::string_view a, std::string_view b) noexcept {
    const auto has = [](const auto& names, std::string_view name) {
        return !name.empty() && std::ranges::any_of(names, [name](std::string_view each) {
            return equalsIgnoringCase(name, each);
        });
    };
    return equalsIgnoringCase(a, b) || std::ranges::any_of(kMachineNames, [&](const auto& names) {
               return has(names, a) && has(names, b);
           });
}

/// Calls `matches` with each part between dashes until one matches.
template <class F>
bool anyPart(std::string_view triple, F matches) {
    while (true) {
        const std::size_t dash = triple.find('-');
        if (matches(triple.substr(0, dash))) {
            return true;
        }
        if (dash == std::string_view::npos) {
            return false;
        }
        triple.remove_prefix(dash + 1);
    }
}

}  // namespace

bool isWindowsTriple(std::string_view triple) noexcept {
    return contains(triple, {"mingw", "windows", "cygwin"});
}

bool isAppleTriple(std::string_view triple) noexcept {
    return contains(triple, {"apple", "darwin", "macos"});
}

std::string_view nativeTriple() noexcept {
    return platform::kWindows ? "x86_64-w64-mingw32" : "x86_64-linux-gnu";
}

bool isNativeMachine(std::string_view triple) noexcept {
    const std::string_view machine = triple.substr(0, triple.find('-'));
    return triple.empty() || std::ranges::find(kMachines, machine) != std::end(kMachines);
}

bool isNativeTriple(std::string_view triple) noexcept {
    if (triple.empty()) {
        return true;
    }
    if (!isNativeMachine(triple)) {
        return false;
    }
    if (platform::kWindows) {
        return isWindowsTriple(triple);
    }
    // Programs for these need libraries that a plain Linux lacks.
    return contains(triple, {"linux"}) && !contains(triple, {"android", "musl", "uclibc"});
}

bool tripleFits(std::string_view triple, std::string_view asked) noexcept {
    if (equalsIgnoringCase(triple, asked)) {
        return true;
    }
    if (equalsIgnoringCase(asked, "native")) {
        return isNativeTriple(triple);
    }
    if (equalsIgnoringCase(asked, "windows")) {
        return isWindowsTriple(triple);
    }
    return anyPart(triple, [asked](std::string_view part) { return sameMachine(part, asked); });
}

std::string_view tripleOfPrefix(std::string_view prefix) noexcept {
    return prefix.substr(0, prefix.find_last_not_of('-') + 1);
}

}  // namespace Vesk
