// Which builder a target gets, and where the programs are looked for.

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/builder.h"
#include "tools/c_family/scratch_folder.h"
#include "tools/c_family/toolchain_programs.h"
#include "tools/gnu/gnu_matcher.h"
#include "tools/llvm/llvm_matcher.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

template <class M>
std::string failureOf() {
    try {
        M("tool", {}, mapOf({var("toolchain_version", str("12"))}));
    } catch (const VeskException& error) {
        return error.message();
    }
    return "none";
}

TEST(ToolchainMatchers, NeedAPath) {
    EXPECT_EQ(failureOf<GNUMatcher>(), "GNUMatcher requires want variable 'toolchain_path'.");
    EXPECT_EQ(failureOf<LLVMMatcher>(), "LLVMMatcher requires want variable 'toolchain_path'.");
}

TEST(ToolchainMatchers, BuilderByWhatATargetNames) {
    struct Case {
        std::vector<Assignment> target;
        const char* gnu;
        const char* llvm;
    };
    const auto type = [](const char* word) { return var("OUTPUT_TYPE", str(word)); };
    const Case cases[] = {
        {{var("C_FILES", str("a.c"))}, "gcc", "clang"},
        {{var("ASM_FILES", str("a.s")), type("static")}, "gcc", "clang"},
        {{var("CPP_FILES", str("a.cpp")), var("C_FILES", str("a.c"))}, "g++", "clang++"},
        {{var("CPP_FILES", list({})), var("C_FILES", str("a.c"))}, "gcc", "clang"},
        {{var("OBJ_FILES", str("a.o"))}, "g++", "clang++"},
        {{var("OBJ_FILES", str("a.o")), type("static")}, "ar", "llvm-ar"},
        {{var("OBJ_FILES", str("a.o")), type("Relocatable")}, "ld", "lld"},
        {{var("OBJ_FILES", str("a.o")), var("LINKER_SCRIPT", str("x"))}, "ld", "lld"},
        {{var("C_FILES", str("a.c")), var("LINKER_SCRIPT", str("x"))}, "gcc", "clang"},
        {{var("OBJCOPY_INPUT", str("a.o")), var("C_FILES", str("a.c"))}, "objcopy", "llvm-objcopy"},
    };
    const AssignmentMap declared = mapOf({var("toolchain_path", path("/nowhere"))});
    const GNUMatcher gnu("gnu", {}, declared);
    const LLVMMatcher llvm("llvm", {}, declared);
    for (const Case& each : cases) {
        const auto target = contextOf(each.target);
        EXPECT_EQ(gnu.createBuilder(*target)->name(), each.gnu);
        EXPECT_EQ(llvm.createBuilder(*target)->name(), each.llvm);
        EXPECT_EQ(gnu.match(*target).note, MatchNote::BuildPossible);
        EXPECT_EQ(gnu.clone()->match(*target).note, MatchNote::BuildPossible);
    }
}

class ToolchainPlaces : public testing::Test {
  protected:
    std::string placeOf(const std::string& where, const char* prefix = "",
                        const char* suffix = "") {
        ToolchainPrograms programs("gcc");
        auto target = targetOf({var("PROJECT_ROOT", str(folder_.path())), var("sub", str("opt"))});
        const DeclaredPlace declared = declaredPlace(
            mapOf({var("toolchain_path", str(where)), var("toolchain_prefix", str(prefix)),
                   var("toolchain_suffix", str(suffix))}));
        try {
            const ToolchainPlace& place = programs.place(declared, *target);
            return place.folder.substr(folder_.path().size()) + "|" + place.prefix + "|" +
                   place.suffix;
        } catch (const VeskException& error) {
            return error.message();
        }
    }

    ScratchFolder folder_;
};

TEST_F(ToolchainPlaces, FolderRootOrCompiler) {
    const std::string exe(programEnding());
    folder_.write("opt/bin/arm-none-eabi-gcc-12" + exe, "");
    folder_.write("opt/bin/gcc" + exe, "");
    EXPECT_EQ(placeOf("opt/bin"), "/opt/bin||");
    EXPECT_EQ(placeOf("${sub}"), "/opt/bin||");
    EXPECT_EQ(placeOf(folder_.path() + "/opt/", "arm-none-eabi-", "-12"),
              "/opt/bin|arm-none-eabi-|-12");
    EXPECT_EQ(placeOf("opt/bin/arm-none-eabi-gcc-12" + exe), "/opt/bin|arm-none-eabi-|-12");
    const std::string missing = placeOf("opt", "avr-");
    EXPECT_TRUE(missing.starts_with("There is no compiler 'avr-gcc" + exe + "' in '")) << missing;
}

TEST_F(ToolchainPlaces, ProgramsWithAndWithoutSuffix) {
    const std::string exe(programEnding());
    folder_.write("b/llvm-ar-14" + exe, "");
    folder_.write("b/x-ld" + exe, "");
    ToolchainPrograms programs("clang");
    const ToolchainPlace plain = {folder_.path() + "/b", "", "-14"};
    const ToolchainPlace cross = {folder_.path() + "/b", "x-", "-14"};
    const std::string ar = folder_.path() + "/b/llvm-ar-14" + exe;
    EXPECT_EQ(programs.find(plain, {"none-such", "llvm-ar"}), ar);
    EXPECT_EQ(programs.find(cross, {"ld"}), folder_.path() + "/b/x-ld" + exe);
    EXPECT_EQ(programs.find(cross, {"no-such-program"}), "");
    EXPECT_THROW(programs.require(cross, {"no-such-program"}), VeskException);
    EXPECT_EQ(declaredPlace(mapOf({var("toolchain_prefix", str("avr-"))})).triple, "avr");
}

}  // namespace
}  // namespace Vesk::test
