// How well a compiler toolchain fits a target.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/matcher.h"
#include "tools/toolchain_detection.h"
#include "tools/variable_table.h"

namespace Vesk {

/// The settings of a toolchain that a target can ask for.
std::vector<CiString> toolchainSettings();

/// What the matchers of compilers want: the settings that every declaration may give.
const AssignmentMap& toolchainWants();

/// Throws VeskException, naming `matcherClass`, for a declaration without "toolchain_path".
void requireToolchainPath(const Matcher& matcher, const char* matcherClass);

/// The triple that a declaration gives or that its prefix implies; empty if neither does.
std::string declaredTriple(const AssignmentMap& declared);

/// Whether and how well the toolchain fits a target that assigns one of `subjects`. Every setting
/// that the target asks for must fit:
///
///     toolchain_version      "12" fits 12.2.0
///     toolchain_min_version  numbers are compared
///     toolchain_name         "GCC 12.2.0", or the start of it, "GCC"
///     toolchain_target       see tripleFits; TARGET_TRIPLE likewise for a compiler with one target
///     toolchain_prefix, toolchain_suffix, toolchain_path, tool_type
///
/// A hint is only preferred. A toolchain that makes programs for other machines must be asked for.
/// If several fit a system such as "windows", one for this machine's processor is preferred.
/// Between toolchains that fit equally well `toolchain_default` decides: one declared without it is
/// preferred, then the one that detection marked as the machine's.
///
/// A target that spells out its commands is left to the command tools.
///
struct ToolchainTraits {
    const char* toolType;
    const char* matcherClass;
    std::span<const std::string_view> subjects;
    bool anyTarget = false;      ///< the compiler makes code for any TARGET_TRIPLE
    std::string_view need = {};  ///< a variable that the target must have
};

/// `declared`: the tool's own settings.
MatchResult matchToolchain(const ToolchainTraits& toolchain, const AssignmentMap& declared,
                           const Context& target);

}  // namespace Vesk
