#include "tools/discovery/compiler_search.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "platform/system.h"
#include "tools/scratch_directory.h"

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
    void put(const std::string& name) {
        directory_.write(name + std::string(programSuffix()), name);
    }

    std::string found(const std::vector<std::string>& directories) {
        std::vector<std::string> paths;
        for (const std::string& directory : directories) {
            paths.push_back(directory_.path() + "/" + directory);
        }
        std::string names;
        for (const FoundCompiler& compiler : findCompilers("gcc", paths)) {
            std::string name = compiler.path.substr(directory_.path().size() + 1);
            name.resize(name.size() - programSuffix().size());
            names += (names.empty() ? "" : " ") + name;
        }
        return names;
    }

    ScratchDirectory directory_;
};

TEST_F(CompilerSearch, PlainNameThenNewestThenCross) {
    for (const char* name : {"b/gcc-9", "b/gcc", "b/gcc-12", "b/gcc-ar", "b/arm-none-eabi-gcc",
                             "a/gcc-13", "ccache/gcc", "distcc/gcc"}) {
        put(name);
    }
    directory_.write("b/gcc-11/readme", "");
    EXPECT_EQ(found({"ccache", "b", "missing", "b", "a", "distcc"}),
              "b/gcc b/gcc-12 b/gcc-9 b/arm-none-eabi-gcc a/gcc-13");
}

TEST_F(CompilerSearch, LinksToOneCompilerAreOne) {
    if (platform::kWindows) {
        GTEST_SKIP() << "links need privileges";
    }
    put("bin/gcc-12");
    put("bin/ccache");
    const auto link = [this](const char* target, const char* name) {
        std::filesystem::create_directories(
            std::filesystem::path(directory_.path() + "/" + name).parent_path());
        std::filesystem::create_symlink(directory_.path() + "/" + target,
                                        directory_.path() + "/" + name);
    };
    link("bin/gcc-12", "bin/gcc");
    link("bin/gcc-12", "bin/x86_64-linux-gnu-gcc-12");
    link("bin/ccache", "local/gcc");
    link("bin", "usr");
    EXPECT_EQ(found({"local", "usr", "bin"}), "usr/gcc");
}

TEST(DetectedToolchain, AsTheRegistryHoldsIt) {
    const Toolchain toolchain = {
        "gnu-gcc", "GCC", "12.2.0", "arm-none-eabi", {"/opt/a b/bin", "arm-none-eabi-", "-12"},
        "no"};
    const DetectedTool tool = detectedTool(toolchain, "gcc");
    EXPECT_EQ(tool.name, "gcc-12-2-0-arm-none-eabi");
    EXPECT_EQ(tool.context->textOf("toolchain_name"), "GCC 12.2.0 for arm-none-eabi");
    EXPECT_EQ(tool.context->textOf("tool_type"), "gnu-gcc");
    EXPECT_EQ(tool.context->textOf("toolchain_version"), "12.2.0");
    EXPECT_EQ(tool.context->textOf("toolchain_prefix"), "arm-none-eabi-");
    EXPECT_EQ(tool.context->textOf("toolchain_suffix"), "-12");
    const std::string path = platform::kWindows ? R"(\opt\a b\bin)" : "/opt/a b/bin";
    EXPECT_EQ(tool.context->find("toolchain_path")->toSourceString(),
              "toolchain_path = P\"(" + path + ")\"");
}

}  // namespace
}  // namespace Vesk::test
