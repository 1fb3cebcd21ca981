// The programs of a toolchain installed in one directory.
#pragma once

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/remembered.h"
#include "tools/discovery/pkg_config.h"
#include "types/context/context.h"

namespace Vesk {

/// How the programs of one toolchain are named: "x86_64-w64-mingw32-" "gcc" "-posix".
struct ToolchainPlace {
    std::string directory;
    std::string prefix;
    std::string suffix;
};

/// Where a tool's declaration says that its programs are; references are not resolved yet.
struct DeclaredPlace {
    ValuePtr path;  ///< toolchain_path
    std::string prefix;
    std::string suffix;
    std::string triple;  ///< empty if the declaration names no target machine
};

DeclaredPlace declaredPlace(const Context::Map& declared);

/// The text of a declared value. References in it are resolved in the target.
std::string resolvedText(const ValuePtr& value, Context& target);

/// The declared path for one target. References in it are resolved in the target, and a relative
/// path starts from the project's root.
std::string pathFor(const DeclaredPlace& declared, Context& target);

/// Finds programs and remembers for the whole run where they are. Shared by the copies of a
/// matcher; used on the driver's thread only.
class ToolchainPrograms {
  public:
    /// `compiler`: the word in the compiler's name, "gcc".
    explicit ToolchainPrograms(std::string compiler) : compiler_(std::move(compiler)) {}

    /// Where the compiler is. The declared path is its directory, a directory whose `bin` holds it,
    /// or the compiler itself; references in it are resolved in the target. Throws VeskException if
    /// there is no compiler.
    const ToolchainPlace& place(const DeclaredPlace& declared, Context& target);

    /// The first of these programs that exists: with the suffix, without it, then, with the prefix,
    /// anywhere in PATH. Empty if there is none.
    std::string find(const ToolchainPlace& place, std::initializer_list<std::string_view> names);

    /// The same for a program that is indispensable. Throws VeskException if it is missing.
    std::string require(const ToolchainPlace& place, std::initializer_list<std::string_view> names);

    /// The path of the pkg-config for a machine. For this machine that is the plain program; for
    /// others one with the triple in front, or the plain one if PKG_CONFIG_LIBDIR says where the
    /// packages for that machine are. Throws VeskException if there is none.
    const std::string& requirePkgConfig(const ToolchainPlace& place, const std::string& triple);

    PkgConfig& packages() noexcept { return packages_; }

  private:
    ToolchainPlace locate(const std::string& path, ToolchainPlace given) const;

    std::string compiler_;
    platform::Remembered<ToolchainPlace> places_;
    platform::Remembered<std::string> programs_;
    platform::Remembered<std::string> pkgConfigs_;  ///< by triple
    PkgConfig packages_;
};

/// The directories that a toolchain's programs need in PATH to run: on Windows their own libraries
/// lie beside them.
std::vector<std::filesystem::path> runDirectories(const ToolchainPlace& place);

/// The system's suffix for programs: ".exe" or nothing.
std::string_view programSuffix() noexcept;

/// The directories of PATH, as text.
std::vector<std::string> searchPath();

}  // namespace Vesk
