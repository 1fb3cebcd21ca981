// Which targets the tool takes.

#include <gtest/gtest.h>

#include "base/exception.h"
#include "tools/android/android_matcher.h"
#include "tools/builder.h"
#include "tools/tool_fixture.h"

namespace Vesk::test {
namespace {

TEST(AndroidSdkMatcher, NeedsAPath) {
    try {
        AndroidSdkMatcher("sdk", {}, {});
        FAIL();
    } catch (const VeskException& error) {
        EXPECT_EQ(error.message(), "AndroidSdkMatcher requires want variable 'toolchain_path'.");
    }
}

TEST(AndroidSdkMatcher, TakesManifestsThatNoOtherToolMeans) {
    struct Case {
        std::vector<Assignment> target;
        bool possible;
    };
    const Assignment manifest = var("MANIFEST", str("AndroidManifest.xml"));
    const Case cases[] = {
        {{manifest}, true},
        {{var("RES_DIRS", str("res"))}, false},
        {{manifest, var("C_FILES", str("a.c"))}, false},
        {{manifest, var("OBJ_FILES", str("a.o"))}, false},
        {{manifest, var("cmdline", str("echo"))}, false},
        // What a profile says to compilers.
        {{manifest, var("tool_type", str("llvm-clang")), var("toolchain_version", str("14")),
          var("TARGET_TRIPLE", str("aarch64-linux-android21"))},
         true},
    };
    const AndroidSdkMatcher matcher("sdk", {}, mapOf({var("toolchain_path", path("/nowhere"))}));
    for (const Case& each : cases) {
        const auto note = matcher.match(*contextOf(each.target)).note;
        EXPECT_EQ(note == MatchNote::BuildPossible, each.possible);
    }
    EXPECT_EQ(matcher.clone()->createBuilder(*contextOf({manifest}))->name(), "android_apk");
}

}  // namespace
}  // namespace Vesk::test
