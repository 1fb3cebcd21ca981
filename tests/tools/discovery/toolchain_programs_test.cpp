#include "tools/discovery/toolchain_programs.h"

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/scratch_directory.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

class ToolchainPlaces : public testing::Test {
  protected:
    std::string placeOf(const std::string& where, const char* prefix = "",
                        const char* suffix = "") {
        ToolchainPrograms programs("gcc");
        auto target =
            targetOf({var("PROJECT_ROOT", str(directory_.path())), var("sub", str("opt"))});
        const DeclaredPlace declared = declaredPlace(
            mapOf({var("toolchain_path", str(where)), var("toolchain_prefix", str(prefix)),
                   var("toolchain_suffix", str(suffix))}));
        try {
            const ToolchainPlace& place = programs.place(declared, *target);
            return place.directory.substr(directory_.path().size()) + "|" + place.prefix + "|" +
                   place.suffix;
        } catch (const VeskException& error) {
            return error.text();
        }
    }

    ScratchDirectory directory_;
};

TEST_F(ToolchainPlaces, DirectoryRootOrCompiler) {
    const std::string exe(programSuffix());
    directory_.write("opt/bin/arm-none-eabi-gcc-12" + exe, "");
    directory_.write("opt/bin/gcc" + exe, "");
    EXPECT_EQ(placeOf("opt/bin"), "/opt/bin||");
    EXPECT_EQ(placeOf("${sub}"), "/opt/bin||");
    EXPECT_EQ(placeOf(directory_.path() + "/opt/", "arm-none-eabi-", "-12"),
              "/opt/bin|arm-none-eabi-|-12");
    EXPECT_EQ(placeOf("opt/bin/arm-none-eabi-gcc-12" + exe), "/opt/bin|arm-none-eabi-|-12");
    const std::string missing = placeOf("opt", "avr-");
    EXPECT_TRUE(missing.starts_with("There is no compiler 'avr-gcc" + exe + "' in '")) << missing;
}

TEST_F(ToolchainPlaces, ProgramsWithAndWithoutSuffix) {
    const std::string exe(programSuffix());
    directory_.write("b/llvm-ar-14" + exe, "");
    directory_.write("b/x-ld" + exe, "");
    ToolchainPrograms programs("clang");
    const ToolchainPlace plain = {directory_.path() + "/b", "", "-14"};
    const ToolchainPlace cross = {directory_.path() + "/b", "x-", "-14"};
    const std::string ar = directory_.path() + "/b/llvm-ar-14" + exe;
    EXPECT_EQ(programs.find(plain, {"none-such", "llvm-ar"}), ar);
    EXPECT_EQ(programs.find(cross, {"ld"}), directory_.path() + "/b/x-ld" + exe);
    EXPECT_EQ(programs.find(cross, {"no-such-program"}), "");
    EXPECT_THROW(programs.require(cross, {"no-such-program"}), VeskException);
    EXPECT_EQ(declaredPlace(mapOf({var("toolchain_prefix", str("avr-"))})).triple, "avr");
}

}  // namespace
}  // namespace Vesk::test
