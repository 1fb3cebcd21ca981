#include "tools/discovery/toolchain_match.h"

#include <gtest/gtest.h>

#include "tools/discovery/triple.h"
#include "tools/tool_fixture.h"
#include "tools/tool_registry.h"

namespace Vesk::test {
namespace {

// The other system's triple, and this one's.
const std::string kNative(nativeTriple());
const std::string kForeign = isWindowsTriple(kNative) ? "x86_64-linux-gnu" : "x86_64-w64-mingw32";
const std::string kForeignWord = isWindowsTriple(kNative) ? "linux" : "windows";

constexpr std::string_view kCommandSources[] = {"run"};
const ToolTypeRegistration kCommands({.word = "commands",
                                      .factory = {},
                                      .sources = kCommandSources});

Assignment hint(const char* name, const char* value) {
    return var(name, str(value), AssignModifier::Hint);
}

AssignmentMap gcc(const std::string& version, const std::string& triple, const char* isDefault,
                  const char* prefix = "") {
    return mapOf({var("toolchain_name", str("GCC " + version)),
                  var("toolchain_path", path("/opt/gcc/bin")),
                  var("toolchain_version", str(version)), var("toolchain_target", str(triple)),
                  var("toolchain_prefix", str(prefix)), var("toolchain_default", str(isDefault))});
}

/// "no", or the sum of the kinds.
std::string scoreOf(const AssignmentMap& tool, std::vector<Assignment> asked,
                    bool anyTarget = false) {
    asked.push_back(var("C_FILES", list({str("a.c")})));
    constexpr std::string_view subjects[] = {"C_FILES", "CPP_FILES"};
    const MatchResult result =
        matchToolchain({"gnu-gcc", "", subjects, anyTarget}, tool, *contextOf(asked));
    if (result.note != MatchNote::BuildPossible) {
        return "no";
    }
    int score = 0;
    for (const auto& [name, kind] : result.matches) {
        score += static_cast<int>(kind);
    }
    return std::to_string(score);
}

// What each request does to a toolchain that is the machine's default, to another one, and to one
// that makes programs for another system.
TEST(ToolchainMatch, WhatATargetAsksFor) {
    struct Case {
        std::vector<Assignment> asked;
        const char* machines;
        const char* other;
        const char* foreign;
    };
    const Case cases[] = {
        {{}, "3", "2", "no"},
        {{var("toolchain_version", num(12))}, "5", "no", "no"},
        {{var("toolchain_version", str("9.1"))}, "no", "4", "no"},
        {{hint("toolchain_version", "9")}, "2", "4", "no"},
        {{hint("toolchain_version", "7")}, "2", "1", "no"},
        {{var("toolchain_min_version", str("10"))}, "5", "no", "no"},
        {{var("toolchain_min_version", str("9"))}, "5", "4", "no"},
        {{var("toolchain_name", str("gcc"))}, "5", "4", "no"},
        {{var("toolchain_name", str("GCC 9.1.0"))}, "no", "4", "no"},
        {{var("toolchain_name", str("Clang"))}, "no", "no", "no"},
        {{hint("toolchain_name", "clang")}, "2", "1", "no"},
        {{var("tool_type", str("llvm-clang"))}, "no", "no", "no"},
        {{var("tool_type", str("gnu-gcc"))}, "5", "4", "no"},
        {{var("toolchain_target", str(kForeignWord))}, "no", "no", "6"},
        {{var("toolchain_target", str("native"))}, "5", "4", "no"},
        {{hint("toolchain_target", kForeign.c_str())}, "2", "1", "5"},
        {{var("TARGET_TRIPLE", str(kForeign))}, "no", "no", "5"},
        {{var("toolchain_prefix", str("cross-"))}, "no", "no", "5"},
        {{var("run", str("gcc a.c"))}, "no", "no", "no"},
    };
    const AssignmentMap machines = gcc("12.2.0", kNative, kMachineDefault);
    const AssignmentMap other = gcc("9.1.0", kNative, kNoDefault);
    const AssignmentMap foreign = gcc("12.2.0", kForeign, kMachineDefault, "cross-");
    for (const Case& each : cases) {
        const std::string what = each.asked.empty() ? "" : each.asked.front().toDisplayString();
        EXPECT_EQ(scoreOf(machines, each.asked), each.machines) << what;
        EXPECT_EQ(scoreOf(other, each.asked), each.other) << what;
        EXPECT_EQ(scoreOf(foreign, each.asked), each.foreign) << what;
    }
}

TEST(ToolchainMatch, AToolThatIsDeclaredByHandComesFirst) {
    const auto declared = mapOf({var("toolchain_path", path("/opt/gcc/bin"))});
    EXPECT_EQ(scoreOf(declared, {}), "4");
    // Nobody knows its version, so one goes first of which it is known.
    EXPECT_EQ(scoreOf(declared, {var("toolchain_version", str("14"))}), "2");
    EXPECT_EQ(scoreOf(declared, {var("toolchain_path", path("/opt/./gcc/bin"))}), "6");
    // Its prefix tells that it is for another machine.
    const auto cross = mapOf({var("toolchain_prefix", str("arm-none-eabi-"))});
    EXPECT_EQ(scoreOf(cross, {}), "no");
    EXPECT_EQ(scoreOf(cross, {var("toolchain_target", str("arm-none-eabi"))}), "6");
}

TEST(ToolchainMatch, FamilyDefaultsAndCompilersForAnyTarget) {
    const AssignmentMap clang = gcc("14.0.6", kNative, kFamilyDefault);
    EXPECT_EQ(scoreOf(clang, {}), "2");
    EXPECT_EQ(scoreOf(clang, {var("toolchain_name", str("GCC"))}), "5");
    EXPECT_EQ(scoreOf(clang, {var("TARGET_TRIPLE", str("arm-none-eabi"))}, true), "2");
    const auto nothing = contextOf({var("FLAGS", str("-O2")), out("C_FILES")});
    constexpr std::string_view subjects[] = {"C_FILES"};
    EXPECT_EQ(matchToolchain({"gnu-gcc", "", subjects}, clang, *nothing).note,
              MatchNote::BuildImpossible);
}

}  // namespace
}  // namespace Vesk::test
