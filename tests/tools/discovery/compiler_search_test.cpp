#include "tools/discovery/compiler_search.h"

#include <gtest/gtest.h>

#include "tools/scratch_folder.h"

namespace Vesk::test {
namespace {

TEST(CompilerName, PrefixAndSuffix) {
    struct Case {
        const char* name;
        const char* word;
        const char* parts;  // prefix|suffix, or nothing
    };
    const Case cases[] = {
        {"gcc", "gcc", "|"},
        {"gcc-12", "gcc", "|-12"},
        {"gcc-12.2", "gcc", "|-12.2"},
        {"x86_64-w64-mingw32-gcc", "gcc", "x86_64-w64-mingw32-|"},
        {"x86_64-w64-mingw32-gcc-12-posix", "gcc", "x86_64-w64-mingw32-|-12-posix"},
        {"avr-gcc", "gcc", "avr-|"},
        {"clang-14", "clang", "|-14"},
        {"gcc-ar", "gcc", ""},
        {"gcc-ar-12", "gcc", ""},
        {"gcc-", "gcc", ""},
        {"c99-gcc", "gcc", ""},
        {"gnatgcc", "gcc", ""},
        {"gccgo", "gcc", ""},
        {"clang-format-14", "clang", ""},
        {"clang++", "clang", ""},
        {"cc", "gcc", ""},
    };
    for (const Case& each : cases) {
        ToolchainPlace place;
        const bool split = splitCompilerName(each.name, each.word, place);
        EXPECT_EQ(split ? place.prefix + "|" + place.suffix : "", each.parts) << each.name;
    }
}

class CompilerSearch : public testing::Test {
  protected:
    void put(const std::string& name) { folder_.write(name + std::string(programEnding()), name); }

    std::string found(const std::vector<std::string>& folders) {
        std::vector<std::string> paths;
        for (const std::string& folder : folders) {
            paths.push_back(folder_.path() + "/" + folder);
        }
        std::string names;
        for (const FoundCompiler& compiler : findCompilers("gcc", paths)) {
            std::string name = compiler.path.substr(folder_.path().size() + 1);
            name.resize(name.size() - programEnding().size());
            names += (names.empty() ? "" : " ") + name;
        }
        return names;
    }

    ScratchFolder folder_;
};

TEST_F(CompilerSearch, PlainNameThenNewestThenCross) {
    for (const char* name : {"b/gcc-9", "b/gcc", "b/gcc-12", "b/gcc-ar", "b/arm-none-eabi-gcc",
                             "a/gcc-13", "ccache/gcc", "distcc/gcc"}) {
        put(name);
    }
    folder_.write("b/gcc-11/readme", "");
    EXPECT_EQ(found({"ccache", "b", "missing", "b", "a", "distcc"}),
              "b/gcc b/gcc-12 b/gcc-9 b/arm-none-eabi-gcc a/gcc-13");
}

}  // namespace
}  // namespace Vesk::test
