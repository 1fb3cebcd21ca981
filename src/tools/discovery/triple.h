// Target triples: "x86_64-w64-mingw32", the machine and the system that a compiler makes code for.
#pragma once

#include <string>
#include <string_view>

namespace Vesk {

bool isWindowsTriple(std::string_view triple) noexcept;
bool isAppleTriple(std::string_view triple) noexcept;

/// How compilers of this machine call it, more or less.
std::string_view nativeTriple() noexcept;

/// Whether the triple begins with a name of this machine's processor. An empty triple does.
bool isNativeMachine(std::string_view triple) noexcept;

/// Whether this machine can run what a compiler with that triple makes. An empty triple counts as
/// the machine's own.
bool isNativeTriple(std::string_view triple) noexcept;

/// Whether a user's word names this triple: the triple itself, one of its parts, "windows" for
/// every name of that system, or "native". A machine may have any of its names ("x64", "arm64").
/// Case does not matter.
bool tripleFits(std::string_view triple, std::string_view asked) noexcept;

/// The triple in the prefix of a cross compiler's programs: "arm-none-eabi-" without its last dash.
std::string_view tripleOfPrefix(std::string_view prefix) noexcept;

}  // namespace Vesk
